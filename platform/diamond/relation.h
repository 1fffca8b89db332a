// A relation: one table of records in a SQLite file, with a cursor.
#ifndef VEL_PLATFORM_DIAMOND_RELATION_H
#define VEL_PLATFORM_DIAMOND_RELATION_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/diamond/relation_files.h"
#include "platform/diamond/relation_lock.h"
#include "platform/sqlite/database.h"
#include "platform/this_process.h"
#include "vel/platform/diamond.h"

namespace vel {

// The calls of diaRel, which vel/platform/diamond.h tells of. They return its statuses, and throw for what ends as
// DIA_FAILED.
class Relation {
  public:
    // The record's bytes belong to the caller.
    Relation(RelationFiles files, std::span<char> record);
    Relation(const Relation&) = delete;
    Relation& operator=(const Relation&) = delete;
    ~Relation();

    int status() const { return status_; }

    int open();
    int close();
    int lock();
    int unlock();

    int begin();
    int end();
    int first();
    int next();

    int add();
    int del();
    int put();

    int create();

    int hold();
    int keep();
    int drop();

  private:
    bool is_locked() const { return lock_ && !lock_->is_inherited(); }
    int ready() const;
    int ready_to_change();

    int look();
    int look_inside();
    bool is_whole();
    void let_go();
    void forget_parents();
    std::string_view bytes() const { return {record_.data(), record_.size()}; }

    const RelationFiles files_;
    const std::span<char> record_;
    std::unique_ptr<RelationLock> lock_;

    // In this order: what is below stands on what is above.
    std::unique_ptr<Database> database_;
    std::unique_ptr<Transaction> changes_;
    struct Walk;
    std::unique_ptr<Walk> walk_;

    int process_ = this_process();  // where the files were opened
    RelationFiles::Stamp stamp_;    // of the files as this object found or left them
    int status_ = DIA_CLOSED;
    int64_t position_ = 0;  // the number of the record that was met last
    bool at_record_ = false;
};

}  // namespace vel

#endif
