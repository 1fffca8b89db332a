#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "tests/platform/relation.h"

namespace vel::test {
namespace {

using testing::HasSubstr;

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
    EXPECT_THAT((std::vector{relation->begin(), relation->end(), relation->first(), relation->next(),
                             relation->add("x"), relation->del(), relation->put("x"), relation->create(),
                             relation->hold(), relation->keep(), relation->drop(), relation->unlock()}),
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

TEST_F(Diamond, follows_what_another_object_puts_in_its_place) {
    const auto relation = made({"old"});
    relation->first();
    relation->unlock();
    {
        Words other(base_);
        other.lock();
        std::filesystem::remove(path("words.db"));
        std::filesystem::remove(path("words.id0"));
        other.create();
        other.add("new");
    }
    EXPECT_EQ(relation->lock(), DIA_OK);
    EXPECT_EQ(relation->put("lost"), DIA_NO_RECORD);
    EXPECT_EQ(relation->all(), "new ");
}

TEST_F(Diamond, does_not_take_a_new_record_for_one_that_is_gone) {
    const auto relation = made({"one", "two"});
    relation->unlock();
    {
        Words other(base_);
        other.lock();
        other.first();
        other.next();
        EXPECT_EQ(other.del() + other.add("three"), DIA_OK);
    }
    relation->lock();
    EXPECT_EQ(relation->put("lost"), DIA_NO_RECORD);
    EXPECT_EQ(relation->next(), DIA_OK);
    EXPECT_EQ(relation->word(), "three");
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
        const bool leaves = relation->first() == DIA_NOT_LOCKED && relation->drop() == DIA_NOT_LOCKED;
        relation.reset();
        ::_exit(leaves);
    });
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(relation->keep(), DIA_OK);
    EXPECT_EQ(relation->all(), "one two ");
}

}  // namespace
}  // namespace vel::test
