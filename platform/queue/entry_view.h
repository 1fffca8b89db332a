// Entries as the interface shows them.
#ifndef VEL_PLATFORM_QUEUE_ENTRY_VIEW_H
#define VEL_PLATFORM_QUEUE_ENTRY_VIEW_H

#include <memory>
#include <string>
#include <vector>

#include "platform/queue/entry.h"
#include "platform/queue/store.h"

namespace vel {

// An entry that owns what the record points at.
class EntryView : public MQEntry {
  public:
    EntryView(Entry entry, std::string message_path);
    EntryView(const EntryView&) = delete;
    EntryView& operator=(const EntryView&) = delete;

  private:
    const Entry kept_;
    const std::string path_;
    std::vector<MQRecipient> views_;
};

std::unique_ptr<EntryView> view_of(const Store& store, Entry entry);

}  // namespace vel

#endif
