#include "converter/Diagnostics.h"

void Diagnostics::put(std::string_view message) {
    if (kept_ != nullptr) {
        kept_->add(message);
        return;
    }
    writeMessage(descriptor_, message);
}

void Diagnostics::sayAll(const KeptMessages& messages) {
    for (std::size_t n = 0; n < messages.count(); ++n) {
        put(messages.at(n));
    }
}
