#include "tools/types/table.h"

#include <sys/stat.h>

#include <cstring>
#include <map>

#include "tools/text/ascii.h"
#include "vel/platform/config.h"
#include "vel/platform/diamond.h"

namespace vel::command {
namespace {

constexpr int kPathSize = 4095;
constexpr int kNotOpen = -1;

Failure failure(Session& session, Exit exit, std::string text) {
    for (const LogLine& line : session.journal.take()) {
        if (line.level == kErrorLevel) text.append("; ").append(line.text);
    }
    return {exit, text};
}

std::string queue_directory() {
    std::string text(kPathSize, '\0');
    const int size = GetPrivateProfileString("Gateway", "QueueDirectory", "", text.data(), kPathSize, "ostra.ini");
    text.resize(static_cast<std::size_t>(size));
    return text;
}

// Copying the seeds changes the process's umask.
class UmaskKept {
  public:
    UmaskKept() : before_(::umask(077)) { ::umask(before_); }
    UmaskKept(const UmaskKept&) = delete;
    UmaskKept& operator=(const UmaskKept&) = delete;
    ~UmaskKept() { ::umask(before_); }

  private:
    const mode_t before_;
};

// An import, on a relation of its own: the calls of the library make each change by itself.
class Import {
  public:
    Import(const std::vector<TypeRow>& rows, Session& session) : base_(queue_directory().c_str()), session_(session) {
        for (const TypeRow& row : rows) wanted_.emplace(lower(row.extension), &row);
    }

    Imported run(const std::vector<TypeRow>& rows, bool clear) {
        require(table_.lock());
        require(table_.status());
        require(table_.hold());
        change(clear);
        for (const TypeRow& row : rows) {
            if (!wanted_.contains(lower(row.extension))) continue;
            put_fields(row);
            require(table_.add());
            ++counts_.added;
        }
        require(table_.keep());
        return counts_;
    }

  private:
    void change(bool clear) {
        int moved = table_.first();
        for (; moved == DIA_OK; moved = table_.next()) {
            const auto row = clear ? wanted_.end() : wanted_.find(lower(current_extension()));
            if (row != wanted_.end()) {
                put_fields(*row->second);
                require(table_.put());
                wanted_.erase(row);
                ++counts_.replaced;
            } else if (clear) {
                require(table_.del());
                ++counts_.removed;
            }
        }
        if (moved != DIA_END) require(moved);
    }

    std::string_view current_extension() const {
        const auto& extension = table_.fields.extension;
        return {extension, ::strnlen(extension, sizeof extension)};
    }

    void put_fields(const TypeRow& row) {
        const MagicRecord record = record_of(row);
        static_assert(sizeof record == sizeof table_.fields);
        std::memcpy(&table_.fields, &record, sizeof record);
    }

    void require(int status) {
        if (status != DIA_OK) throw failure(session_, Exit::unavailable, "nothing was imported");
    }

    diamondBase base_;
    magicdb table_{base_};
    std::map<std::string, const TypeRow*> wanted_;  // that are still to be put in, by extension
    Session& session_;
    Imported counts_;
};

}  // namespace

TypesTable::TypesTable(Session& session) : session_(session) {
    const UmaskKept umask;
    libmagic_init();
    MagicRecord record;
    if (GetFirstMagicRecord(&record) == kNotOpen) {
        libmagic_fini();
        throw failure(
            session, Exit::unavailable,
            "no table of types to be used in " + queue_directory() +
                " ([Gateway] QueueDirectory), and none to be copied from srcdb below [Config] InstallDirectory");
    }
    for (const LogLine& line : session.journal.take()) {
        if (line.level == kErrorLevel) session.output.complain({}, line.text);
    }
}

TypesTable::~TypesTable() { libmagic_fini(); }

bool TypesTable::first(MagicRecord& record) { return found(GetFirstMagicRecord(&record)); }
bool TypesTable::next(MagicRecord& record) { return found(GetNextMagicRecord(&record)); }

bool TypesTable::found(int moved) {
    if (moved != DIA_END) require(moved, "the table cannot be read");
    return moved == DIA_OK;
}

bool TypesTable::has(const std::string& extension) {
    MagicRecord record;
    return found(FindMagicRecord(extension.c_str(), &record));
}

void TypesTable::add(const TypeRow& row) {
    const MagicRecord record = record_of(row);
    require(InsMagicRecord(&record), row.extension + ": not added");
}

void TypesTable::replace(const TypeRow& row) {
    const MagicRecord record = record_of(row);
    require(UpdateMagicRecord(&record), row.extension + ": not replaced");
}

void TypesTable::remove(const std::string& extension) {
    require(DelMagicRecord(extension.c_str()), extension + ": not removed");
}

void TypesTable::require(int status, const std::string& what) {
    if (status != DIA_OK) throw failure(session_, Exit::unavailable, what);
}

Imported import_types(const std::vector<TypeRow>& rows, bool clear, Session& session) {
    return Import(rows, session).run(rows, clear);
}

}  // namespace vel::command
