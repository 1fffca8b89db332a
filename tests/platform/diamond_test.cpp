#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <memory>
#include <utility>

#include "tests/platform/scratch.h"
#include "tests/support/small_disk.h"
#include "vel/platform/diamond.h"
#include "vel/platform/log.h"

namespace vel::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

// A relation whose records are a text of seven bytes.
class Words : public diaRel {
  public:
    explicit Words(diamondBase& base) : diaRel(base, "words", "word:8", word_, sizeof word_) {}

    int add(const std::string& word) { return set(word), diaRel::add(); }
    int put(const std::string& word) { return set(word), diaRel::put(); }
    std::string word() const { return word_; }

    std::string all() {
        std::string text;
        int status = first();
        for (; status == DIA_OK; status = next()) text += word() + " ";
        return status == DIA_END ? text : "status " + std::to_string(status);
    }

  private:
    void set(const std::string& word) { word_[word.copy(word_, sizeof word_ - 1)] = 0; }
    char word_[8] = {};
};

class Diamond : public Scratch {
  protected:
    Diamond() {
        LogCaptureStart([](void* self, int, const char*,
                           const char* text) { static_cast<Diamond*>(self)->log_.emplace_back(text); },
                        this);
    }
    ~Diamond() override { LogCaptureStop(); }

    // A locked relation with these words in it, made anew.
    std::unique_ptr<Words> made(std::initializer_list<const char*> words) {
        auto relation = std::make_unique<Words>(base_);
        EXPECT_EQ(relation->lock(), DIA_OK);
        EXPECT_EQ(relation->create(), DIA_OK);
        for (const char* word : words) EXPECT_EQ(relation->add(word), DIA_OK);
        return relation;
    }

    std::string words() {
        Words relation(base_);
        relation.lock();
        return relation.all();
    }

    std::vector<std::string> take_log() { return std::exchange(log_, {}); }

    diamondBase base_{path("").c_str()};

  private:
    std::vector<std::string> log_;
};

TEST_F(Diamond, walks_in_the_order_of_adding_while_records_change) {
    const auto relation = made({"one", "two", "three", "four"});
    EXPECT_EQ(relation->first(), DIA_OK);
    EXPECT_EQ(relation->put("ONE"), DIA_OK);
    EXPECT_EQ(relation->next(), DIA_OK);
    EXPECT_EQ(relation->del(), DIA_OK);
    EXPECT_EQ(relation->del(), DIA_NO_RECORD);
    EXPECT_EQ(relation->put("none"), DIA_NO_RECORD);
    relation->unlock();
    relation->lock();
    EXPECT_EQ(relation->next(), DIA_OK);
    EXPECT_EQ(relation->word(), "three");
    EXPECT_EQ(relation->add("five"), DIA_OK);
    EXPECT_EQ(relation->next(), DIA_END);
    EXPECT_EQ(relation->all(), "ONE three four five ");
    EXPECT_EQ(relation->begin() + relation->next() + relation->end(), DIA_OK);
    EXPECT_EQ(relation->word(), "ONE");
}

TEST_F(Diamond, asks_for_the_lock) {
    const auto relation = made({"one"});
    relation->unlock();
    EXPECT_THAT(
        (std::vector{relation->begin(), relation->end(), relation->first(), relation->next(), relation->add("x"),
                     relation->del(), relation->put("x"), relation->set_aside(), relation->create(), relation->hold(),
                     relation->keep(), relation->drop(), relation->unlock()}),
        testing::Each(int{DIA_NOT_LOCKED}));
    EXPECT_EQ(words(), "one ");
}

TEST_F(Diamond, keeps_a_group_of_changes_or_none) {
    const auto relation = made({"one"});
    relation->hold();
    relation->add("two");
    EXPECT_EQ(relation->drop(), DIA_OK);
    relation->hold();
    relation->first();
    relation->del();
    relation->unlock();
    EXPECT_EQ(words(), "one ");
    relation->lock();
    relation->hold();
    relation->add("three");
    EXPECT_EQ(relation->keep(), DIA_OK);
    relation->unlock();
    EXPECT_EQ(words(), "one three ");
}

// Whatever lies there: a clear status, nothing touched, and after set_aside room for another relation.
TEST_F(Diamond, tells_what_it_cannot_use) {
    made({"one", "two"});
    const std::string whole = content("words.db");
    const std::string identity = content("words.id0");
    std::string other = whole;
    other[70] = 'x';
    std::string ahead_log = whole;
    ahead_log[18] = ahead_log[19] = 2;
    std::string no_page = whole;
    no_page.replace(8192, 64, 64, 'x');
    const struct {
        const char* name;
        std::string records;
        std::string identity;
        int status;
    } rows[] = {
        {"whole", whole, identity, DIA_OK},
        {"empty", "", identity, DIA_MISSING},
        {"text", "no database", identity, DIA_MISSING},
        {"header alone", whole.substr(0, 100), identity, DIA_MISSING},
        {"half a page", whole.substr(0, 2000), identity, DIA_MISSING},
        {"a page", whole.substr(0, 8192), identity, DIA_MISSING},
        {"one byte short", whole.substr(0, whole.size() - 1), identity, DIA_MISSING},
        {"another program's", other, identity, DIA_MISSING},
        {"write-ahead log", ahead_log, identity, DIA_MISSING},
        {"damaged page", no_page, identity, DIA_MISSING},
        {"no identity", whole, "", DIA_LAYOUT},
        {"another layout", whole, "diamond 1 words 8 00000000\n", DIA_LAYOUT},
        {"long identity", whole, identity + std::string(1 << 20, 'x'), DIA_LAYOUT},
        {"neither", "x", "y", DIA_MISSING},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        write("words.db", row.records);
        write("words.id0", row.identity);
        EXPECT_EQ(Words(base_).status(), row.status);
        EXPECT_EQ(take_log().empty(), row.status != DIA_MISSING);
        EXPECT_EQ(content("words.db"), row.records);
        EXPECT_EQ(content("words.id0"), row.identity);
    }
}

TEST_F(Diamond, sets_aside_files_of_every_kind) {
    for (const char* number : {"1", "2"}) {
        made({"one"});
        write("words.db", "damaged");
        write("words.db-journal", "stale");
        Words relation(base_);
        relation.lock();
        EXPECT_EQ(relation.set_aside(), DIA_OK);
        EXPECT_EQ(content(std::string("words.db.").append(number).append("-journal")), "stale");
        EXPECT_EQ(relation.status(), DIA_MISSING);
    }
    EXPECT_EQ(::mkdir(path("words.db").c_str(), 0700), 0);
    EXPECT_EQ(::mkfifo(path("words.id0").c_str(), 0600), 0);
    Words relation(base_);
    EXPECT_EQ(relation.status(), DIA_MISSING);
    relation.lock();
    EXPECT_EQ(relation.create(), DIA_FAILED);
    EXPECT_EQ(relation.set_aside(), DIA_OK);
    EXPECT_EQ(relation.create(), DIA_OK);
    EXPECT_THAT(names(),
                AllOf(Contains("words.db.3"), Contains("words.id0.3"), testing::Not(Contains("words.db-journal"))));
    EXPECT_THAT(take_log(), Contains(HasSubstr("words.db: File exists")));
}

TEST_F(Diamond, needs_a_directory) {
    for (const char* directory : {"", "/nowhere/at/all", "/etc/passwd"}) {
        diamondBase base(directory);
        Words relation(base);
        EXPECT_EQ(relation.status(), DIA_MISSING) << directory;
        EXPECT_EQ(relation.lock(), DIA_MISSING) << directory;
        EXPECT_EQ(relation.first(), DIA_NOT_LOCKED) << directory;
    }
    std::filesystem::create_symlink("/nowhere", path("words.lock"));
    EXPECT_EQ(Words(base_).lock(), DIA_FAILED);
    EXPECT_THAT(take_log(), Contains(HasSubstr("words.lock: Too many levels")));
}

TEST_F(Diamond, follows_what_another_object_puts_in_its_place) {
    const auto relation = made({"old"});
    relation->first();
    relation->unlock();
    {
        Words other(base_);
        other.lock();
        other.set_aside();
        other.create();
        other.add("new");
    }
    EXPECT_EQ(relation->lock(), DIA_OK);
    EXPECT_EQ(relation->put("lost"), DIA_NO_RECORD);
    EXPECT_EQ(relation->all(), "new ");
}

// Wherever the disk ends, a call that succeeded stays and one that failed leaves nothing.
TEST_F(Diamond, survives_a_full_disk) {
    made({"0"});
    std::string expected = "0 ";
    bool failed = false;
    const std::size_t now = content("words.db").size();
    for (std::size_t room = 0; room < now + 16384; room += 700) {
        const std::string word = std::to_string(room);
        Words relation(base_);
        relation.lock();
        const SmallDisk disk(room);
        if (relation.add(word) == DIA_OK) {
            expected += word + " ";
        } else {
            failed = true;
        }
    }
    EXPECT_EQ(words(), expected);
    EXPECT_TRUE(failed);
    EXPECT_THAT(expected, HasSubstr(std::to_string((now + 16383) / 700 * 700)));
    EXPECT_THAT(take_log(), Not(IsEmpty()));
}

// Runs body in a child, which may be killed.
template <class Body>
pid_t in_child(Body body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        ::_exit(0);
    }
    return child;
}

TEST_F(Diamond, is_shared_by_processes_and_survives_their_end) {
    const auto mine = made({});
    mine->unlock();
    std::vector<pid_t> children;
    for (const char* word : {"a", "b", "c"}) {
        children.push_back(in_child([&] {
            for (int i = 0; i < 30; ++i) {
                mine->lock();  // inherited open
                mine->add(word);
                mine->unlock();
            }
        }));
    }
    const pid_t killed = in_child([&] {
        for (;;) {
            Words relation(base_);
            relation.lock();
            relation.hold();
            for (int i = 0; i < 500; ++i) relation.add("half");
            relation.drop();
        }
    });
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ::kill(killed, SIGKILL);
    ::waitpid(killed, nullptr, 0);
    mine->lock();
    const std::string all = mine->all();
    for (const char word : {'a', 'b', 'c'}) EXPECT_EQ(std::count(all.begin(), all.end(), word), 30) << all;
    EXPECT_THAT(all, testing::Not(HasSubstr("half")));
}

// The child inherits the lock and a change that is half made; its end must not touch either.
TEST_F(Diamond, leaves_a_change_alone_in_the_child_of_a_fork) {
    auto relation = made({"one"});
    relation->hold();
    relation->add("two");
    int status = -1;
    const pid_t child = in_child([&] {
        const int walked = relation->first();
        relation.reset();
        ::_exit(walked);
    });
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), DIA_NOT_LOCKED);
    EXPECT_EQ(relation->keep(), DIA_OK);
    EXPECT_EQ(relation->all(), "one two ");
}

}  // namespace
}  // namespace vel::test
