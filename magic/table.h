// The table of types: how it is locked and walked.
#ifndef VEL_MAGIC_TABLE_H
#define VEL_MAGIC_TABLE_H

#include <string_view>

#include "frame/ascii.h"
#include "frame/settings.h"
#include "magic/record.h"

namespace vel {

// The file is named as it is, whatever iniFileName holds.
constexpr const char* kIniFile = "ostra.ini";
constexpr Setting<4095> kQueueDirectory{"Gateway", "QueueDirectory", ""};

// The lock of a relation, for the length of a block.
class RelationHeld {
  public:
    explicit RelationHeld(diaRel& relation) : relation_(relation), status_(relation_.lock()) {}
    RelationHeld(const RelationHeld&) = delete;
    RelationHeld& operator=(const RelationHeld&) = delete;
    ~RelationHeld() {
        if (status_ == DIA_OK) relation_.unlock();
    }
    int status() const { return status_; }

  private:
    diaRel& relation_;
    const int status_;
};

// Walks to the first record that matches. Returns the result of the last move: 0 when it is the current one.
template <class Match>
int walk_to(magicdb& table, Match&& match) {
    table.begin();
    int moved = table.first();
    while (moved == DIA_OK && !match(table.fields)) moved = table.next();
    table.end();
    return moved;
}

inline auto has_extension(std::string_view extension) {
    return [extension](const magicdbFields& fields) {
        return ascii::equals_ignoring_case(text_of(fields.extension), extension);
    };
}

}  // namespace vel

#endif
