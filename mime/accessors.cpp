// The accessors of records: each answers null, or -1, for a null argument.
#include <vector>

#include "frame/at_boundary.h"
#include "mime/record.h"

namespace {

// Calls visit for a record and everything below it, at any depth.
template <class Visit>
void for_each_entity(const MimeMsg& top, Visit visit) {
    std::vector<const MimeMsg*> waiting{&top};
    while (!waiting.empty()) {
        const MimeMsg* record = waiting.back();
        waiting.pop_back();
        visit(*record);
        waiting.insert(waiting.end(), record->children, record->children + record->numChildren);
    }
}

// Adds to a counter for every entity of a tree that has children.
template <class Amount>
int count_containers(const MimeMsg* record, int* counter, Amount amount) {
    if (!record || !counter) return -1;
    return vel::at_boundary(-1, [&] {
        for_each_entity(*record, [&](const MimeMsg& entity) {
            if (entity.numChildren > 0) *counter += amount(entity);
        });
        return 0;
    });
}

}  // namespace

extern "C" {

char* MimeGetContentType(const MimeMsg* record) { return record ? record->contentType : nullptr; }
char* MimeGetContentSubtype(const MimeMsg* record) { return record ? record->contentSubtype : nullptr; }
ms* MimeGetContentTypeParams(const MimeMsg* record) { return record ? record->contentTypeParams : nullptr; }
char* MimeGetContentDisposition(const MimeMsg* record) { return record ? record->contentDisposition : nullptr; }
ms* MimeGetContentDispositionParams(const MimeMsg* record) {
    return record ? record->contentDispositionParams : nullptr;
}
char* MimeGetContentID(const MimeMsg* record) { return record ? record->contentID : nullptr; }
char* MimeGetContentDescription(const MimeMsg* record) { return record ? record->contentDescription : nullptr; }
char* MimeGetContentTransferEncoding(const MimeMsg* record) {
    return record ? record->contentTransferEncoding : nullptr;
}
char* MimeGetTrueName(const MimeMsg* record) { return record ? record->trueName : nullptr; }

int MimeGetNumLeafBodyParts(const MimeMsg* record, int* counter) {
    return count_containers(record, counter, [](const MimeMsg& container) { return container.numChildren - 1; });
}

int MimeGetNumMultipartHeaders(const MimeMsg* record, int* counter) {
    return count_containers(record, counter, [](const MimeMsg&) { return 1; });
}

}  // extern "C"
