#include <gtest/gtest.h>
#include <memory>

#include "base/Exception.h"

namespace {

struct Flagging : vek::ExceptionAttachment {
    explicit Flagging(bool& destroyed) : destroyed_(destroyed) {}
    ~Flagging() override { destroyed_ = true; }
    bool& destroyed_;
};

struct Plain : vek::Exception {
    using Exception::Exception;
    const char* family() const override { return "PLAIN"; }
};

}  // namespace

TEST(Exception, ThrownCopyKeepsEverything) {
    bool destroyed = false;
    try {
        vek::StdError error("no such thing", 2);
        error.attach(std::make_unique<Flagging>(destroyed));
        throw error;  // a copy: the named object is destroyed on the way
    } catch (const vek::Exception& caught) {
        EXPECT_STREQ(caught.family(), "STD");
        EXPECT_EQ(caught.msg().cmp("no such thing"), 0);
        vek::JulianDate now;
        now.init();
        EXPECT_LT(now.microseconds - caught.time().microseconds, 60'000'000);
        EXPECT_TRUE(caught.attachment() != nullptr && !destroyed);
    }
    EXPECT_TRUE(destroyed);
    EXPECT_TRUE(Plain("x").code() == 0 && *Plain("x").title() == '\0');
}
