// An exception is copied when it is thrown, and the attachment can't be: hence the copies share it.
// The text of an error number is asked for only when somebody wants to read it.

#include "base/Exception.h"

#include <cstring>
#include <utility>

namespace vek {

Exception::Exception(const char* text) : message_(text == nullptr ? "" : text) {
    time_.init();
}

Exception::~Exception() = default;

int Exception::code() const {
    return 0;
}

const char* Exception::title() const {
    return "";
}

String Exception::msg() const {
    return message_;
}

void Exception::attach(std::unique_ptr<ExceptionAttachment> attachment) {
    attachment_ = std::move(attachment);
}

StdError::StdError(const char* text, int errorNumber)
    : Exception(text), errorNumber_(errorNumber) {}

const char* StdError::family() const {
    return "STD";
}

int StdError::code() const {
    return errorNumber_;
}

const char* StdError::title() const {
    return errorNumber_ == 0 ? "" : std::strerror(errorNumber_);
}

}  // namespace vek
