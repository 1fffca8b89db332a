// What vel init makes.
#ifndef VEL_TOOLS_VERBS_WORKING_PLACE_H
#define VEL_TOOLS_VERBS_WORKING_PLACE_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/io/descriptor.h"
#include "tools/io/session.h"

namespace vel::command {

// A directory with the configuration file, the queue and the other directories that it names.
class WorkingPlace {
  public:
    WorkingPlace(const std::string& directory, Session& session) : directory_(directory), session_(session) {}
    WorkingPlace(const WorkingPlace&) = delete;
    WorkingPlace& operator=(const WorkingPlace&) = delete;
    ~WorkingPlace();  // removes what was made and is empty, unless all of it was

    std::string ini() const { return directory_ + "/ostra.ini"; }
    std::string queue() const { return directory_ + "/queue"; }
    std::string temporary() const { return directory_ + "/tmp"; }
    std::string install() const { return directory_ + "/install"; }

    // Throws Failure where the configuration file stands.
    void require_free() const;

    // Makes what is missing, the configuration file last, so that it stands where all else does. Throws Failure.
    void make(const std::string& settings);

  private:
    void make_root();
    void lock_root();
    void make_directory(const std::string& path, mode_t mode);
    void make_queue();
    void make_types();
    void write_ini(const std::string& settings);

    const std::string directory_;
    Session& session_;
    std::optional<Descriptor> root_;  // locked
    std::vector<std::string> made_;
    bool done_ = false;
};

}  // namespace vel::command

#endif
