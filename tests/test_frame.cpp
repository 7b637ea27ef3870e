// The version record and the C interface.
#include "support.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

extern "C" int zt_c_api_check(void);

namespace {

TEST(Version, IsOneConstantRecord) {
    const ZamLibVersion* v = zamgenGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, zamgenGetLibVersion());
    EXPECT_EQ(v->major, 6);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->build, 137);
    EXPECT_EQ(v->build2, 316);
    EXPECT_EQ(std::memcmp(v->targetCode, "mx\0\0", 4), 0);
    EXPECT_STREQ(v->name, "zamgenmx-6.1.dll");
    EXPECT_STREQ(v->version, "6.1 build 137.36");
    EXPECT_STREQ(v->buildDate, "Sep 29 2009");
}

TEST(Version, HasTheFixedLayout) {
    EXPECT_EQ(offsetof(ZamLibVersion, minor), 4u);
    EXPECT_EQ(offsetof(ZamLibVersion, build), 8u);
    EXPECT_EQ(offsetof(ZamLibVersion, build2), 12u);
    EXPECT_EQ(offsetof(ZamLibVersion, targetCode), 16u);
    EXPECT_EQ(offsetof(ZamLibVersion, name), 24u);
    EXPECT_EQ(offsetof(ZamLibVersion, version), 32u);
    EXPECT_EQ(offsetof(ZamLibVersion, buildDate), 40u);
    EXPECT_EQ(sizeof(ZamLibVersion), 48u);
}

TEST(CInterface, HeaderCompilesAsCAndCallsWork) { EXPECT_EQ(zt_c_api_check(), 0); }

} // namespace
