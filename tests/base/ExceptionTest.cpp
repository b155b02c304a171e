#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <string>

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
        vek::StdError error("no such thing", ENOENT);
        error.attach(std::make_unique<Flagging>(destroyed));
        throw error;  // a copy: the named object is destroyed on the way
    } catch (const vek::Exception& caught) {
        EXPECT_EQ(std::string(caught.family()) + ":" + caught.msg().c_str(), "STD:no such thing");
        EXPECT_EQ(caught.code(), 2);
        EXPECT_STREQ(caught.title(), "No such file or directory");
        vek::JulianDate now;
        now.init();
        EXPECT_LT(now.microseconds - caught.time().microseconds, 60'000'000);
        EXPECT_TRUE(caught.attachment() != nullptr && !destroyed);
    }
    EXPECT_TRUE(destroyed);
}

TEST(Exception, AbsentPartsAreEmpty) {
    EXPECT_STREQ(vek::StdError("x", 0).title(), "");
    EXPECT_EQ(vek::StdError(nullptr, 0).msg().cmp(""), 0);
    EXPECT_TRUE(Plain("x").code() == 0 && *Plain("x").title() == '\0');
}
