// vel types, and the types file that is shipped.
#include <fstream>
#include <iterator>

#include "tests/tools/run_vel.h"
#include "tools/types/types_file.h"

namespace vel::command {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kUnavailable = 69;

TEST(TypesFile, IsShippedWholeAndComesBackAsItIs) {
    std::ifstream in(VEL_SAMPLES "/../data/types.csv");
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const TypesFile types = read_types(text);
    EXPECT_THAT(types.faults, IsEmpty());
    EXPECT_GE(types.rows.size(), 400u);
    std::string again = types_heading();
    for (const TypeRow& row : types.rows) again += types_line(row_of(record_of(row)));
    EXPECT_EQ(again, text);
}

TEST(TypesFile, TellsWhatIsWrong) {
    const std::string heading = types_heading();
    const struct {
        std::string text;
        const char* fault;
    } rows[] = {
        {"", "1: the heading"},
        {"ext,type\n", "1: the heading"},
        {heading + "a,b,c,base64,,\n", "2: there are not seven fields"},
        {heading + "a,b,c,base64,,,,\n", "2: there are not seven fields"},
        {heading + "a,b,c,base64,,\"TEXT,\n", "2: there are not seven fields"},
        {heading + "a,b,c,base64,,\"TE\"T,\n", "2: there are not seven fields"},
        {heading + "\n\na,b,c,base64,,,\r\nA,b,c,base64,,,", "5: the extension stands in line 4 too"},
        {heading + ",b,c,base64,,,", "2: the extension is missing"},
        {heading + "0123456789,b,c,base64,,,", "2: the extension has more than 9 bytes"},
        {heading + "a b,b,c,base64,,,", "2: the extension has a character"},
        {heading + "\xC3\xA4,b,c,base64,,,", "2: the extension has a character"},
        {heading + "a," + std::string(50, 'b') + ",c,base64,,,", "2: the type has more than 49"},
        {heading + "a,b,c/d,base64,,,", "2: the subtype has a character"},
        {heading + "a,b," + std::string(128, 'c') + ",base64,,,", "2: the subtype has more than 127"},
        {heading + "a,b,c,8bit,,,", "2: the encoding is neither"},
        {heading + "a,b,c,,,,", "2: the encoding is neither"},
        {heading + "a,b,c,base64,,TEXTT,", "2: the mac type has more than 4"},
        {heading + "a,b,c,base64,,TEXT,\t", "2: the creator has a character"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(read_types(row.text).faults, ElementsAre(HasSubstr(row.fault))) << row.text;
    }
    const TypesFile good = read_types(heading + "a,b,c,Base64,,\",\"\"x\",\"\"\r\n");
    ASSERT_THAT(good.faults, IsEmpty());
    EXPECT_EQ(good.rows.front().mac_type, ",\"x");
    EXPECT_EQ(types_line(good.rows.front()), "a,b,c,Base64,,\",\"\"x\",\n");
}

// A place made anew, in which a shell runs.
class TypesTest : public test::CommandTest {
  protected:
    TypesTest() { EXPECT_EQ(shell("vel init place --host h.d > /dev/null"), 0); }

    int in_place(const std::string& line) const {
        return shell("export OSTRA_CONFIG_DIR=\"$PWD/place\"; exec > out 2> said; " + line);
    }
    std::string out() const { return content((directory() / "out").string()); }
    std::string said() const { return content((directory() / "said").string()); }
};

TEST_F(TypesTest, FindsWhatANewPlaceHas) {
    EXPECT_EQ(in_place("vel types find --mac TEXTttxt .JPG image/png nope"), test::kNoInput);
    EXPECT_THAT(said(), HasSubstr("nope: no such type"));
    EXPECT_THAT(out(), testing::AllOf(HasSubstr("jpg "), HasSubstr("png "), HasSubstr("txt ")));
    EXPECT_EQ(
        in_place("printf '\\377' > a.jpg; printf a > b.jpg; printf '\\377' > c; vel types of a.jpg b.jpg c --json"), 0);
    EXPECT_THAT(out(), HasSubstr("\"ascii\":false,\"sent_as\":\"image/jpeg\",\"encoding\":\"base64\""));
    EXPECT_THAT(out(), HasSubstr("\"ascii\":true,\"sent_as\":\"text/basic\",\"encoding\":\"7bit\""));
    EXPECT_THAT(out(),
                HasSubstr("\"known\":false,\"type\":null,\"ascii\":false,\"sent_as\":\"application/x-unknown\""));
}

TEST_F(TypesTest, ChangesTheTable) {
    EXPECT_EQ(in_place("vel types add --extension foo --type a/b --mac 'FOO foo!' && vel types find foo --json"), 0);
    EXPECT_EQ(out(),
              "{\"extension\":\"foo\",\"type\":\"a\",\"subtype\":\"b\",\"encoding\":\"base64\",\"second_subtype\":null,"
              "\"mac_type\":\"FOO\",\"creator\":\"foo!\"}\n");
    EXPECT_EQ(in_place("vel types add --extension FOO --type a/c"), test::kBadData);
    EXPECT_EQ(in_place("vel types add --extension FOO --type a/c --replace && vel types find foo"), 0);
    EXPECT_THAT(out(), HasSubstr("a/c"));
    EXPECT_EQ(in_place("vel types add --extension x --type a/c --encoding 7bit"), test::kBadData);
    EXPECT_EQ(in_place("vel types remove foo foo"), test::kNoInput);
    EXPECT_EQ(in_place("vel types find foo"), test::kNoInput);
}

TEST_F(TypesTest, ImportsAllOrNothing) {
    const std::string heading = types_heading();
    file("good.csv", heading + "new,a,b,base64,,,\nTXT,c,d,base64,,,\n");
    file("bad.csv", heading + "other,a,b,base64,,,\nbad\n");
    EXPECT_EQ(in_place("vel types export > before; vel types import bad.csv"), test::kBadData);
    EXPECT_THAT(said(), HasSubstr("bad.csv: line 3: there are not seven fields"));
    EXPECT_EQ(in_place("vel types export | cmp - before && vel types import good.csv && vel types find txt new"), 0);
    EXPECT_THAT(out(), testing::AllOf(HasSubstr("1 added, 1 replaced, 0 removed"), HasSubstr("c/d"), HasSubstr("a/b")));
    EXPECT_EQ(in_place("vel types import --clear before && vel types export | cmp - before"), 0);
    EXPECT_EQ(in_place("vel types import --clear good.csv && vel types export | cmp - good.csv"), 0);
}

TEST_F(TypesTest, TellsOfATableThatIsNotThere) {
    EXPECT_EQ(
        in_place("echo x > place/queue/magicdb.db; vel types find txt && echo x | cmp - place/queue/magicdb.db.1"), 0);
    EXPECT_THAT(said(), HasSubstr("magicdb.db is no relation"));
    EXPECT_EQ(in_place("rm -r place/install/srcdb place/queue/magicdb.db; vel types list"), kUnavailable);
    EXPECT_THAT(said(), HasSubstr("no table of types to be used in "));
}

}  // namespace
}  // namespace vel::command
