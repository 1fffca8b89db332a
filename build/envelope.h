// The envelope that is handed to the queue, with the records and addresses that stand in it.
#ifndef VEL_BUILD_ENVELOPE_H
#define VEL_BUILD_ENVELOPE_H

#include <list>
#include <string>

#include "vel/envelope.h"

namespace vel {

// Texts are the caller's, who keeps them as long; null counts as empty. Throws std::bad_alloc, but an empty envelope
// takes no memory.
class Envelope {
  public:
    Envelope() { record_.number2 = -1; }

    void set_sender(const _envFrom& sender);
    void add_recipient(const _envRecip& recipient);

    // Keeps a text for a record.
    const char* keep(std::string text) { return kept_.emplace_back(std::move(text)).c_str(); }

    stEnvelope& record() { return record_; }

  private:
    _envFrom sender_{};
    std::list<_envRecip> recipients_;
    std::list<std::string> kept_;
    stEnvelope record_;
};

}  // namespace vel

#endif
