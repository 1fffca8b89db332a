// Envelopes as text, and the records that callers fill.
#include "build/envelope_line.h"
#include "tests/build/built.h"

namespace vel::test {
namespace {

class EnvelopeTest : public BuildTest {};

TEST_F(EnvelopeTest, lines) {
    struct {
        const char* sender;
        const char* uses_host;
        const char* expected;
    } const senders[] = {
        {"<>", "YES", "#F<>"},          {"me", "yes", "#Fme@gw.corp"},    {"me", "NO", "#Fme@corp"},
        {"me@x", "YES", "#Fme@x.corp"}, {"m.e@x", "YES", "#Fm.e@x.corp"}, {"me@x.y", "YES", "#Fme@x.y"},
    };
    for (const auto& row : senders) {
        set("Options", "useHostname", row.uses_host);
        EXPECT_EQ(line_of(_envFrom{row.sender, "", 0, 0, "", ""}), row.expected);
    }
    EXPECT_EQ(line_of(_envFrom{"<>", "id", 2, 0, "", ""}), "#F<> ENVID=id RET=FULL");
    EXPECT_EQ(line_of(_envFrom{"<>", nullptr, 1, 0, "", ""}), "#F<> RET=HDRS");
    EXPECT_EQ(line_of(_envFrom{"<>", "", 3, 0, "", ""}), "#F<>");
    std::string notify;
    for (int flags = -1; flags <= 16; ++flags) {
        notify += line_of(_envRecip{"a", flags ? "" : "rfc822;a", flags, "", ""}).substr(2) + "/";
    }
    EXPECT_EQ(notify,
              "a/a ORCPT=rfc822;a/a NOTIFY=NEVER/a NOTIFY=SUCCESS/a/a NOTIFY=FAILURE/a/a NOTIFY=SUCCESS,FAILURE/a/"
              "a NOTIFY=DELAY/a/a NOTIFY=SUCCESS,DELAY/a/a NOTIFY=FAILURE,DELAY/a/a NOTIFY=SUCCESS,FAILURE,DELAY/a/a/");
}

TEST_F(EnvelopeTest, records_of_callers) {
    PerRecipField record;
    EXPECT_EQ(AssignPerRecipField(&record, "o", "f", nullptr, "s", "", "d", 5, -6), 0);
    EXPECT_STREQ(record.originalRecipient, "o");
    EXPECT_EQ(record.action, nullptr);
    EXPECT_STREQ(record.remoteMta, "");
    EXPECT_STREQ(record.diagnosticCode, "d");
    EXPECT_EQ(record.lastAttempt, 5);
    EXPECT_EQ(record.willRetryUntil, -6);
    CleanPerRecipField(&record);
    EXPECT_EQ(record.diagnosticCode, nullptr);
    EXPECT_EQ(record.lastAttempt, -1);
    EXPECT_EQ(record.willRetryUntil, -1);
    CleanPerRecipField(nullptr);
    EXPECT_EQ(AssignPerRecipField(nullptr, "o", "f", "a", "s", "r", "d", 5, 6), -1);

    auto* sender = static_cast<_envFrom*>(std::calloc(1, sizeof(_envFrom)));
    *sender = {::strdup("a"), ::strdup("i"), 0, 0, ::strdup("t"), "not freed"};
    FreeEnvFrom(sender);
    FreeEnvFrom(nullptr);
    EXPECT_EQ(GetEnvelopeFrom("path", nullptr), nullptr);

    const uint32_t small = 1, large = 0x80000000u;
    EXPECT_EQ(compare_uniqueType(&small, &large), -1);
    EXPECT_EQ(compare_uniqueType(&large, &small), 1);
    EXPECT_EQ(compare_uniqueType(&large, &large), 0);
}

}  // namespace
}  // namespace vel::test
