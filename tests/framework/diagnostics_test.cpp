#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"
#include "utils/common/QMBase.h"
#include "utils/module/MFCQMUtils.h"

#define QM_SOURCE_MODULE "Common\\test"

TEST(Diagnostics, AssertionReportsTextModuleAndLineAndCarriesOn) {
    qmtest::RecordingAssertSink sink;
    int value = 3;
    const int line = __LINE__; bool held = CVASSERT(value >= 1 && value <= 2);
    EXPECT_FALSE(held);
    ASSERT_EQ(sink.Reports().size(), 1u);
    const qmtest::AssertReport& r = sink.Reports()[0];
    EXPECT_EQ(r.expression, "value >= 1 && value <= 2");
    EXPECT_EQ(r.module, "Common\\test");
    EXPECT_EQ(r.line, line);
    EXPECT_TRUE(CVASSERT(value == 3));
    EXPECT_EQ(sink.Reports().size(), 1u);
}

TEST(Diagnostics, RaiseErrorThrowsThePointerWithItsDetails) {
    try {
        CQMWException::RaiseError(nullptr, "m_pBytes != NULL", "Common\\DIB", 77);
        FAIL() << "RaiseError returned";
    } catch (CQMWException* e) {
        EXPECT_EQ(e->GetLine(), 77);
        EXPECT_TRUE(e->GetMessage().IsEmpty());
        char text[128];
        EXPECT_TRUE(e->GetErrorMessage(text, sizeof text));
        EXPECT_STREQ(text, "Common\\DIB(77): m_pBytes != NULL");
        e->Delete();
    }
}

TEST(ModuleFrame, VersionRecordFilledAtLoad) {
    const OSVERSIONINFOA& v = GetModuleOSVersion();
    EXPECT_EQ(sizeof(OSVERSIONINFOA), 148u);
    EXPECT_EQ(v.dwOSVersionInfoSize, 148u);
    EXPECT_EQ(v.dwPlatformId, (DWORD)VER_PLATFORM_WIN32_NT);
    EXPECT_GT(v.dwMajorVersion, 0u);
    EXPECT_EQ(AfxGetApp(), &GetMFCQMUtilsApp());
}
