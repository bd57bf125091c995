#include <gtest/gtest.h>
#include <cstring>

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
    EXPECT_TRUE(r.expression == "value >= 1 && value <= 2" && r.module == "Common\\test" && r.line == line);
    EXPECT_TRUE(CVASSERT(value == 3) && sink.Reports().size() == 1u);
}

TEST(Diagnostics, TraceFormatsLikePrintf) {
    qmtest::RecordingTraceSink sink;
    _cvtrace_("%s=%d;", "n", 42);
    _cvtrace_("%05.1f", 2.25);
    EXPECT_EQ(sink.Text(), "n=42;002.2");
}

TEST(Diagnostics, RaiseErrorThrowsThePointerWithItsDetails) {
    try {
        CQMWException::RaiseError(nullptr, "m_pBytes != NULL", "Common\\DIB", 77);
        FAIL() << "RaiseError returned";
    } catch (CException* e) {
        auto* qe = dynamic_cast<CQMWException*>(e);
        ASSERT_NE(qe, nullptr);
        EXPECT_TRUE(qe->GetExpression() == "m_pBytes != NULL" && qe->GetSourceModule() == "Common\\DIB");
        EXPECT_TRUE(qe->GetLine() == 77 && qe->GetMessage().IsEmpty());
        char text[128];
        EXPECT_TRUE(e->GetErrorMessage(text, sizeof text));
        EXPECT_STREQ(text, "Common\\DIB(77): m_pBytes != NULL");
        e->Delete();
    }
}

TEST(ModuleFrame, VersionRecordFilledAtLoad) {
    const OSVERSIONINFOA& v = GetModuleOSVersion();
    EXPECT_TRUE(sizeof(OSVERSIONINFOA) == 148u && v.dwOSVersionInfoSize == 148u);
    EXPECT_TRUE(v.dwPlatformId == (DWORD)VER_PLATFORM_WIN32_NT && v.dwMajorVersion > 0u);
    EXPECT_EQ(AfxGetApp(), &GetMFCQMUtilsApp());
}
