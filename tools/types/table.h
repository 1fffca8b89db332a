// The command's way to the table of types.
#ifndef VEL_TOOLS_TYPES_TABLE_H
#define VEL_TOOLS_TYPES_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/io/exit_code.h"
#include "tools/io/session.h"
#include "tools/types/type_row.h"

namespace vel::command {

// The open table, as long as this lives; one a process. Where there is none the seeds are put in its place.
class TypesTable {
  public:
    explicit TypesTable(Session& session);  // throws Failure
    TypesTable(const TypesTable&) = delete;
    TypesTable& operator=(const TypesTable&) = delete;
    ~TypesTable();

    // Calls on_row(row) for each type, in the order of the table. Throws Failure.
    template <class OnRow>
    void for_each(OnRow&& on_row) {
        MagicRecord record;
        for (bool there = first(record); there; there = next(record)) on_row(row_of(record));
    }

    bool has(const std::string& extension);
    void add(const TypeRow& row);
    void replace(const TypeRow& row);
    void remove(const std::string& extension);

  private:
    bool first(MagicRecord& record);
    bool next(MagicRecord& record);
    bool found(int moved);
    void require(int status, const std::string& what);

    Session& session_;
};

struct Imported {
    std::size_t added = 0;
    std::size_t replaced = 0;
    std::size_t removed = 0;
};

// Puts rows into the table, all of them or none: they replace those of the same extension; with clear, all others go.
// Throws Failure.
Imported import_types(const std::vector<TypeRow>& rows, bool clear, Session& session);

}  // namespace vel::command

#endif
