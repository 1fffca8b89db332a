#include "platform/diamond/relation.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/diamond/checked_files.h"
#include "platform/diamond/report.h"
#include "platform/failure.h"

namespace vel {
namespace {

constexpr const char* kName = "the relation's database";
constexpr mode_t kFileMode = 0660;

// A change is on disk when it returns, the end of its journal too. The file is anybody's: it is read with care. A walk
// meets each page once, and 16 of them in memory are faster than many; changes fill more before they are written. (Of
// the number of pages to spill at, SQLite takes the last byte for a switch: 256 would be "never".)
constexpr const char* kSettings =
    "PRAGMA synchronous = EXTRA;"
    "PRAGMA trusted_schema = OFF;"
    "PRAGMA cell_size_check = ON;"
    "PRAGMA cache_size = -128;"
    "PRAGMA cache_spill = 255;";

// A walk reads all of a table: larger pages make fewer system calls of it.
constexpr const char* kPageSize = "PRAGMA page_size = 8192";

// A number is given to one record only: who stands on one that another has removed must not meet the next one under it.
constexpr const char* kTable = "CREATE TABLE records (id INTEGER PRIMARY KEY AUTOINCREMENT, record BLOB NOT NULL)";
constexpr const char* kStrangers =
    "SELECT 1 FROM records WHERE typeof(record) <> 'blob' OR length(record) <> ? LIMIT 1";
constexpr const char* kSchema = "SELECT group_concat(sql, ';') FROM sqlite_schema";
const std::string kOurSchema = std::string(kTable) + ";CREATE TABLE sqlite_sequence(name,seq)";

// Of a page that it could not read, for a failing disk or a lack of memory, quick_check tells as of a damaged one.
bool tells_of_failure(const std::string& verdict) {
    const auto tells = [&](const char* text) { return verdict.find(text) != std::string::npos; };
    return tells("failed to get page") || (tells("unable to get the page") && !tells("error code=11"));
}

}  // namespace

struct Relation::Walk {
    Walk(Database& database, int64_t from)
        : records(database.query("SELECT id, record FROM records WHERE id > ? ORDER BY id")) {
        records << from;
    }
    Query records;
};

Relation::Relation(RelationFiles files, std::span<char> record) : files_(std::move(files)), record_(record) {}

Relation::~Relation() { forget_parents(); }

// Nothing of these may be closed in the child of a fork: that would undo a change that the parent is making.
void Relation::forget_parents() {
    if (process_ == this_process()) return;
    static_cast<void>(walk_.release());
    static_cast<void>(changes_.release());
    static_cast<void>(database_.release());
}

void Relation::let_go() {
    forget_parents();
    walk_.reset();
    changes_.reset();
    database_.reset();
    at_record_ = false;
    stamp_ = {};
}

int Relation::look() {
    let_go();
    status_ = DIA_FAILED;  // should something throw
    process_ = this_process();
    stamp_ = files_.stamp();
    if (!files_.has_records()) {
        if (stamp_.records) report("open", files_.records() + " is no relation");
        return status_ = DIA_MISSING;
    }
    return status_ = files_.has_identity() ? look_inside() : DIA_LAYOUT;
}

int Relation::look_inside() {
    try {
        database_ = std::make_unique<Database>(files_.records(), kName);
        database_->execute(kSettings);
        if (database_->text(kSchema) != kOurSchema) throw DamagedError(files_.records() + " holds other tables");
        if (!is_whole()) throw DamagedError(files_.records() + " is damaged");
        return DIA_OK;
    } catch (const DamagedError& error) {
        report("open", error.what());
        let_go();
        return DIA_MISSING;
    }
}

// SQLite reads what is missing of the last page as zeros. When the schema was read it has undone what was cut short.
bool Relation::is_whole() {
    const auto stamp = files_.stamp().records;
    if (stamp && was_whole(files_.records(), *stamp)) return true;
    if (!stamp) return false;
    const std::string verdict = database_->text("PRAGMA quick_check(1)");
    if (tells_of_failure(verdict)) throw Failure("cannot read all of " + files_.records());
    if (verdict != "ok") return false;
    if (stamp->size < database_->number("PRAGMA page_count") * database_->number("PRAGMA page_size")) return false;
    if ((database_->query(kStrangers) << static_cast<int64_t>(record_.size())).next()) return false;
    remember_whole(files_.records(), *stamp);
    return true;
}

int Relation::open() {
    if (is_locked()) return look();
    lock();
    if (is_locked()) unlock();
    return status_;
}

// A caller closes what it cannot use to put another relation there. Who has no lock must not move anything: another
// may be about to do the same.
int Relation::close() {
    const bool makes_room = is_locked() && (status_ == DIA_MISSING || status_ == DIA_LAYOUT);
    let_go();
    status_ = DIA_CLOSED;
    const int number = makes_room ? files_.set_aside() : 0;
    if (number > 0) report("close", files_.records() + " was set aside as number " + std::to_string(number));
    return DIA_OK;
}

// What has become of the files shows in their stamps: others may have put another relation in the place of this one.
int Relation::lock() {
    if (is_locked()) return DIA_OK;
    const int before = std::exchange(status_, int{DIA_FAILED});  // should something throw
    if (!files_.has_directory()) {
        let_go();
        return status_ = DIA_MISSING;
    }
    const bool is_known = process_ == this_process() && before != DIA_FAILED && before != DIA_CLOSED;
    lock_.reset();  // an inherited one: should the parent have died with it, it would keep us out
    auto lock = std::make_unique<RelationLock>(files_.lock());
    status_ = is_known && files_.stamp() == stamp_ ? before : look();
    lock_ = std::move(lock);
    return DIA_OK;
}

int Relation::unlock() {
    if (!is_locked()) return DIA_NOT_LOCKED;
    const auto lock = std::move(lock_);
    walk_.reset();
    changes_.reset();
    if (database_) stamp_ = database_->has_moved() ? RelationFiles::Stamp() : files_.stamp();
    return DIA_OK;
}

// SQLite undoes a transaction by itself when memory or the disk runs out: what followed would not be a part of it.
int Relation::ready() const {
    if (!is_locked()) return DIA_NOT_LOCKED;
    return changes_ && !database_->busy() ? int{DIA_FAILED} : status_;
}

int Relation::begin() {
    walk_.reset();
    position_ = 0;
    at_record_ = false;
    return ready();
}

int Relation::end() {
    walk_.reset();
    return ready();
}

int Relation::first() {
    begin();
    return next();
}

// A walk that fails is given up: SQLite would begin it anew, the next one goes on behind the position.
int Relation::next() {
    if (const int status = ready()) return status;
    at_record_ = false;
    auto walk = walk_ ? std::move(walk_) : std::make_unique<Walk>(*database_, position_);
    if (!walk->records.next()) return DIA_END;
    std::string_view found;
    walk->records >> position_ >> found;
    if (found.size() != record_.size()) throw Failure(files_.records() + " has a record of another size");
    std::copy(found.begin(), found.end(), record_.begin());
    walk_ = std::move(walk);
    at_record_ = true;
    return DIA_OK;
}

// No walk stands in the way of a change; it goes on behind it by the position.
int Relation::ready_to_change() {
    const int status = ready();
    walk_.reset();
    return status == DIA_OK && !at_record_ ? int{DIA_NO_RECORD} : status;
}

int Relation::add() {
    walk_.reset();
    if (const int status = ready()) return status;
    database_->query("INSERT INTO records (record) VALUES (?)").bind_bytes(bytes()).run();
    position_ = database_->last_added();
    at_record_ = true;
    return DIA_OK;
}

int Relation::del() {
    if (const int status = ready_to_change()) return status;
    at_record_ = false;
    const auto gone = (database_->query("DELETE FROM records WHERE id = ?") << position_).run();
    return gone > 0 ? DIA_OK : DIA_NO_RECORD;
}

int Relation::put() {
    if (const int status = ready_to_change()) return status;
    Query query = database_->query("UPDATE records SET record = ? WHERE id = ?");
    return (query.bind_bytes(bytes()) << position_).run() > 0 ? DIA_OK : DIA_NO_RECORD;
}

// SQLite keeps the file's mode for its journals.
int Relation::create() {
    if (!is_locked()) return DIA_NOT_LOCKED;
    let_go();
    status_ = DIA_CLOSED;
    const std::string path = files_.records();
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
    if (!file) throw Failure::of_system("cannot make", path);
    file = Descriptor();
    Database fresh(path, kName);
    fresh.execute(kSettings);
    fresh.execute(kPageSize);
    Transaction whole(fresh);
    fresh.execute(kTable);
    fresh.execute(("PRAGMA application_id = " + std::to_string(kApplication)).c_str());
    fresh.execute(("PRAGMA user_version = " + std::to_string(kVersion)).c_str());
    whole.commit();
    files_.write_identity();
    return look();
}

int Relation::hold() {
    walk_.reset();
    if (const int status = ready()) return status;
    if (!changes_) changes_ = std::make_unique<Transaction>(*database_);
    return DIA_OK;
}

int Relation::keep() {
    walk_.reset();
    if (const int status = ready()) return status;
    if (changes_) changes_->commit();
    changes_.reset();
    return DIA_OK;
}

int Relation::drop() {
    if (!is_locked()) return DIA_NOT_LOCKED;
    walk_.reset();
    changes_.reset();
    at_record_ = false;
    return ready();
}

}  // namespace vel
