// What every measurement stands on: a started library, and a log that is dropped.
#ifndef VEL_BENCH_SESSION_H
#define VEL_BENCH_SESSION_H

namespace vel::bench {

// One a process, on the thread that measures. The settings are those of a folder that make-inputs or check-growth
// has made, whose temporary directory is the place for all that is written. They are not made here: while the file
// is a few seconds young it is read again for each setting, and that would be measured.
class Session {
  public:
    explicit Session(const char* settings);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

}  // namespace vel::bench

#endif
