#include "converter/Diagnostics.h"

#include <new>
#include <system_error>

#include "converter/Processors.h"

void Diagnostics::put(std::string_view message) {
    if (kept_ != nullptr) {
        kept_->add(message);
        return;
    }
    if (thread_ && message.size() <= MessageThread::mostBytes && !message.empty()) {
        thread_->add(message);
        return;
    }
    if (thread_) {
        thread_->drain();
    }
    writeMessage(descriptor_, message);
}

void Diagnostics::sayAll(const KeptMessages& messages) {
    for (std::size_t n = 0; n < messages.count(); ++n) {
        put(messages.at(n));
    }
}

void Diagnostics::useThread() {
    if (kept_ != nullptr || thread_ || !processors::areSeveral()) {
        return;
    }
    try {
        thread_ = std::make_unique<MessageThread>(descriptor_);
    } catch (const std::system_error&) {  // goes on without
    } catch (const std::bad_alloc&) {
    }
}
