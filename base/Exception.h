#pragma once

#include <memory>

#include "base/JulianDate.h"
#include "base/String.h"

namespace vek {

/// Base of whatever an exception may carry along.
class ExceptionAttachment {
  public:
    virtual ~ExceptionAttachment() = default;
};

/// Root of the base library's exceptions: thrown by value, caught by reference. Copies share
/// the attachment, which is destroyed with the last of them.
class Exception {
  public:
    /// Takes a copy of `text` (null: "") as the message and the current time.
    explicit Exception(const char* text);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    virtual ~Exception();

    /// Short name of the kind of exception.
    virtual const char* family() const = 0;
    /// Number of the error within its family; 0 unless the family has numbers.
    virtual int code() const;
    /// The family's text for code(), valid at least until the next call; "" without one.
    virtual const char* title() const;
    /// A copy of the message.
    virtual String msg() const;

    /// When the exception was made, in whole seconds.
    const JulianDate& time() const { return time_; }
    /// What is attached, null at first; owned by the exception and its copies.
    ExceptionAttachment* attachment() const { return attachment_.get(); }
    /// Replaces the attachment and takes ownership.
    void attach(std::unique_ptr<ExceptionAttachment> attachment);

  private:
    String message_;
    std::shared_ptr<ExceptionAttachment> attachment_;
    JulianDate time_;
};

/// A failure that has a system error number.
class StdError : public Exception {
  public:
    /// As Exception, with the error number (an errno value; 0 for none).
    StdError(const char* text, int errorNumber);

    /// "STD".
    const char* family() const override;
    /// The system error number.
    int code() const override;
    /// The system's text for the number, in static storage; "" for 0.
    const char* title() const override;

  private:
    int errorNumber_;
};

}  // namespace vek
