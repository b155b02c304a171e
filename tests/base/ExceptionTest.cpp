#include <gtest/gtest.h>
#include <memory>

#include "base/Exception.h"

namespace {

struct Plain : vek::Exception {
    using Exception::Exception;
    const char* family() const override { return "PLAIN"; }
};
struct Holding : vek::ExceptionAttachment {
    std::shared_ptr<int> held = std::make_shared<int>();
};

TEST(Exception, ThrownCopyKeepsEverything) {
    auto holding = std::make_unique<Holding>();
    const std::weak_ptr<int> living = holding->held;
    vek::JulianDate before;
    before.init();
    try {
        Plain error("no such thing");
        error.attach(std::move(holding));
        throw error;  // a copy: the named object is destroyed on the way
    } catch (const vek::Exception& caught) {
        EXPECT_TRUE(caught.attachment() != nullptr && !living.expired());
        EXPECT_TRUE(caught.msg().view() == "no such thing" && caught.code() == 0);
        EXPECT_TRUE(*caught.title() == '\0' && caught.time().microseconds >= before.microseconds);
    }
    EXPECT_TRUE(living.expired());
}

}  // namespace
