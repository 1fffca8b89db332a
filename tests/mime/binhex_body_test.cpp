// BinHex bodies as files.
#include "tests/codec/mac_file.h"
#include "tests/support/fixture.h"
#include "vel/mime.h"

namespace vel::test {
namespace {

class BinhexBody : public VelTest {
  protected:
    ~BinhexBody() override { MimeFreeMessage(&pool_); }

    MimeMsg* record_of(const std::string& message, int index = 0) {
        MimeFreeMessage(&pool_);
        MimeParseMessage(file("message", message).c_str(), 1, &pool_);
        return MimeGetMsg(pool_, index);
    }

    static std::string taken(char* path) {
        if (!path) return "(null)";
        const std::string text = content(path);
        MimeFreeFile(path);
        return text;
    }

    mime_msg_pool* pool_ = nullptr;
};

const MacFile kFile{"a", "TEXT", "ttxt", 0, "hello", std::string(90, 'r') + "fork and more than a line of text"};
const std::string kBinhex = kFile.hqx();
constexpr const char* kHead = "MIME-Version: 1.0\r\nContent-Type: application/MAC-binhex40\r\n";

TEST_F(BinhexBody, becomes_an_apple_single_file_and_names_the_record) {
    MimeMsg* record = record_of(std::string(kHead) + "\r\nread me first\r\n" + kBinhex);
    for (int round = 0; round < 2; ++round) {  // the name is replaced
        EXPECT_EQ(taken(MimeGetBody(record, 0, -1)), kFile.apple_single());
        EXPECT_STREQ(MimeGetTrueName(record), "a");
    }
    EXPECT_TRUE(taken(MimeGetBody(record, 1, -1)).starts_with("MIME-Version"));
    EXPECT_STREQ(MimeGetTrueName(record), "a");
    EXPECT_EQ(taken(MimeGetBody(record_of("Subject: none\r\n\r\ntext\r\n"s + kBinhex, 1), 0, -1)),
              kFile.apple_single());
}

TEST_F(BinhexBody, that_does_not_decode_is_delivered_without_a_name) {
    const std::string damaged = std::string(kBinhex).replace(60, 1, "~");
    struct {
        const char* name;
        const char* header;
        std::string body;
    } const rows[] = {
        {"character outside the alphabet", "", damaged},
        {"no text", "", "nothing\r\n"},
        {"no body", "", ""},
        {"another encoding counts first", "Content-Transfer-Encoding: x-uue\r\n", kBinhex},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        MimeMsg* record = record_of(std::string(kHead) + row.header + "\r\n" + row.body);
        record->trueName = ::strdup("before");
        EXPECT_EQ(taken(MimeGetBody(record, 0, -1)), row.body);
        EXPECT_STREQ(MimeGetTrueName(record), nullptr);
        EXPECT_THAT(left_behind("binhex"), testing::ElementsAre());
        EXPECT_THAT(left_behind("MIME"), testing::ElementsAre());
    }
}

}  // namespace
}  // namespace vel::test
