// The exported classes, and the one door where exceptions stop.
#include <exception>
#include <new>
#include <string>

#include "platform/diamond/relation.h"
#include "platform/diamond/report.h"
#include "vel/platform/diamond.h"

namespace {

// Runs body() and returns its result; when it throws, reports why and returns failed.
template <class R, class Body>
R guarded(const char* call, R failed, Body&& body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        vel::report(call, "out of memory");
    } catch (const std::exception& error) {
        vel::report(call, error.what());
    }
    return failed;
}

}  // namespace

struct diamondBase::State {
    std::string directory;
};

diamondBase::diamondBase(const char* directory) noexcept
    : state_(guarded("diamondBase", std::unique_ptr<State>(),
                     [&] { return std::make_unique<State>(State{directory ? directory : ""}); })) {}

diamondBase::~diamondBase() = default;

const char* diamondBase::directory() const { return state_ ? state_->directory.c_str() : ""; }

struct diaRel::State {
    vel::Relation relation;

    template <class Call>
    static int run(State* state, const char* name, Call call) noexcept {
        if (!state) return DIA_FAILED;
        return guarded(name, int{DIA_FAILED}, [&] { return (state->relation.*call)(); });
    }
};

diaRel::diaRel(diamondBase& base, const char* name, const char* layout, void* record, size_t size) noexcept {
    state_ = guarded("diaRel", std::unique_ptr<State>(), [&] {
        vel::RelationFiles files(base.directory(), name ? name : "", layout ? layout : "", size);
        return std::unique_ptr<State>(new State{{std::move(files), {static_cast<char*>(record), size}}});
    });
    open();
}

diaRel::~diaRel() { unlock(); }

int diaRel::status() const { return state_ ? state_->relation.status() : int{DIA_FAILED}; }

int diaRel::open() { return State::run(state_.get(), "open", &vel::Relation::open); }
int diaRel::close() { return State::run(state_.get(), "close", &vel::Relation::close); }
int diaRel::lock() { return State::run(state_.get(), "lock", &vel::Relation::lock); }
int diaRel::unlock() { return State::run(state_.get(), "unlock", &vel::Relation::unlock); }
int diaRel::begin() { return State::run(state_.get(), "begin", &vel::Relation::begin); }
int diaRel::end() { return State::run(state_.get(), "end", &vel::Relation::end); }
int diaRel::first() { return State::run(state_.get(), "first", &vel::Relation::first); }
int diaRel::next() { return State::run(state_.get(), "next", &vel::Relation::next); }
int diaRel::add() { return State::run(state_.get(), "add", &vel::Relation::add); }
int diaRel::del() { return State::run(state_.get(), "del", &vel::Relation::del); }
int diaRel::put() { return State::run(state_.get(), "put", &vel::Relation::put); }
int diaRel::create() { return State::run(state_.get(), "create", &vel::Relation::create); }
int diaRel::hold() { return State::run(state_.get(), "hold", &vel::Relation::hold); }
int diaRel::keep() { return State::run(state_.get(), "keep", &vel::Relation::keep); }
int diaRel::drop() { return State::run(state_.get(), "drop", &vel::Relation::drop); }
