// The maintenance calls, on the table that libmagic_init has opened.
#include "frame/at_boundary.h"
#include "magic/shared_table.h"

namespace vel {
namespace {

// Runs a call's body with the shared table under the mutex and the relation's lock; -1 when it is not open.
template <class Body>
int with_table(const void* argument, Body&& body) {
    if (!argument) return -1;
    return at_boundary(-1, [&] {
        const SharedTableHeld shared;
        if (!shared.table()) return -1;
        const RelationHeld held(*shared.table());
        return held.status() == DIA_OK ? body(*shared.table()) : -1;
    });
}

int copy_if_found(int moved, const magicdb& table, MagicRecord& record) {
    if (moved == DIA_OK) copy_record(table.fields, record);
    return moved;
}

}  // namespace
}  // namespace vel

extern "C" {

int InsMagicRecord(const MagicRecord* record) {
    return vel::with_table(record, [&](magicdb& table) {
        vel::copy_record(*record, table.fields);
        return table.add();
    });
}

// Kept: what is not there has been deleted successfully.
int DelMagicRecord(const char* extension) {
    return vel::with_table(extension, [&](magicdb& table) {
        const int moved = vel::walk_to(table, vel::has_extension(extension));
        if (moved == DIA_END) return int{DIA_OK};
        return moved == DIA_OK ? table.del() : moved;
    });
}

int FindMagicRecord(const char* extension, MagicRecord* record) {
    if (!record) return -1;
    return vel::with_table(extension, [&](magicdb& table) {
        return vel::copy_if_found(vel::walk_to(table, vel::has_extension(extension)), table, *record);
    });
}

int GetFirstMagicRecord(MagicRecord* record) {
    return vel::with_table(record, [&](magicdb& table) { return vel::copy_if_found(table.first(), table, *record); });
}

int GetNextMagicRecord(MagicRecord* record) {
    return vel::with_table(record, [&](magicdb& table) { return vel::copy_if_found(table.next(), table, *record); });
}

int UpdateMagicRecord(const MagicRecord* record) {
    return vel::with_table(record, [&](magicdb& table) {
        magicdbFields wanted;
        vel::copy_record(*record, wanted);
        const int moved = vel::walk_to(table, vel::has_extension(vel::text_of(wanted.extension)));
        if (moved != DIA_OK) return moved;
        table.fields = wanted;
        return table.put();
    });
}

// Kept: there is nothing to create; seeds are copied by libmagic_init.
int CreateMagicFile(void) { return 0; }

}  // extern "C"
