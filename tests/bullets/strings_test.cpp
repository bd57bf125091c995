#include <gtest/gtest.h>

#include "utils/common/DefaultStrings.h"
#include "utils/framework/CString.h"

namespace {

CString Load(UINT id) {
    CString s;
    if (!s.LoadString(id)) return CString("<absent>");
    return s;
}

TEST(DefaultStrings, HostResourcesHaveEnglishDefaults) {
    EXPECT_EQ(Load(614), "From");  // registered when the library loaded, before any Ensure call
    qm::EnsureDefaultStrings();
    const struct { UINT id; const char* text; } cases[] = {
        {607, "Reply-To"}, {608, "Bcc"},     {609, "Organization"}, {610, "Message-ID"},
        {611, "To"},       {612, "Sender"},  {613, "Subject"},      {614, "From"},
        {615, "Date"},     {616, "Cc"},      {684, "Attachments"},  {685, "Priority"},  // 659-662 through GetTodoLevelName
    };
    for (const auto& c : cases) EXPECT_EQ(Load(c.id), c.text) << "id " << c.id;
}

// A host string wins over the default until cleared, a second Ensure keeps later defaults,
// and an id with neither leaves the string alone.
TEST(DefaultStrings, HostStringThenDefaultThenNothing) {
    qm::SetStringResource(660, "Someday");
    qm::SetDefaultStringResource(661, "Medium");
    qm::EnsureDefaultStrings();
    EXPECT_EQ(Load(660), "Someday");
    EXPECT_EQ(Load(661), "Medium");
    qm::ClearStringResource(660);
    qm::SetDefaultStringResource(661, "Normal");
    EXPECT_EQ(Load(660), "Low");
    CString s("kept");
    EXPECT_FALSE(s.LoadString(64999));
    EXPECT_EQ(s, "kept");
    qm::SetDefaultStringResource(64999, "fallback");
    EXPECT_TRUE(s.LoadString(64999));
    EXPECT_EQ(s, "fallback");
    qm::ClearDefaultStringResource(64999);
    EXPECT_FALSE(s.LoadString(64999));
}

}  // namespace
