// What the tests of the record database share: a relation of short texts.
#ifndef VEL_TESTS_PLATFORM_RELATION_H
#define VEL_TESTS_PLATFORM_RELATION_H

#include <memory>
#include <utility>

#include "tests/platform/scratch.h"
#include "tests/support/memory.h"
#include "vel/platform/diamond.h"
#include "vel/platform/log.h"

namespace vel::test {

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
        LogCaptureStart(
            [](void* self, int, const char*, const char* text) {
                const PlentyOfMemory plenty;
                static_cast<Diamond*>(self)->log_.emplace_back(text);
            },
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

}  // namespace vel::test

#endif
