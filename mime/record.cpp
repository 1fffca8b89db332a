#include "mime/record.h"

#include <cstdlib>

#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/chain.h"
#include "frame/owned.h"
#include "mime/growing_array.h"

static_assert(sizeof(void*) != 4 || sizeof(MimeMsg) == 72);

namespace {

constexpr uint16_t kChildrenMax = UINT16_MAX;
constexpr int32_t kContainer = 1;
constexpr int32_t kChild = 2;

}  // namespace

MimeMsg* AllocateNewMsg(const char* path) {
    if (!path) return nullptr;
    return vel::at_boundary<MimeMsg*>(nullptr, [=] {
        vel::COwned<char> name = vel::copy_text(path);
        MimeMsg* record = vel::make_zeroed<MimeMsg>().release();
        record->fileName = name.release();
        return record;
    });
}

int AddMsgNodeToTree(MimeMsg* parent, MimeMsg* child) {
    if (!parent || !child) return -1;
    if (parent->numChildren < kChildrenMax) {
        if (!vel::make_room(parent->children, parent->numChildren)) return -1;
        parent->children[parent->numChildren++] = child;
    }
    parent->nodeKind = kContainer;
    child->nodeKind = kChild;
    return 0;
}

void FreeMsgNode(MimeMsg* record) {
    if (!record) return;
    for (char** text : {&record->contentID, &record->contentDescription, &record->contentType, &record->contentSubtype,
                        &record->contentTransferEncoding, &record->contentDisposition, &record->fileName,
                        &record->boundary, &record->trueName}) {
        vel::clear_text(*text);
    }
    vel::clear_chain(record->contentTypeParams);
    vel::clear_chain(record->contentDispositionParams);
    std::free(record->children);
    record->children = nullptr;
    record->headerStart = record->bodyEnd = record->bodyStart = 0;
    record->numChildren = 0;
}

// The records that wait to be freed hang on their own boundary field, so that no depth needs a stack
// and freeing needs no memory.
void FreeMsgTree(MimeMsg** record) {
    if (!record || !*record) return;
    MimeMsg* waiting = *record;
    *record = nullptr;
    vel::clear_text(waiting->boundary);
    while (waiting) {
        MimeMsg* top = waiting;
        waiting = reinterpret_cast<MimeMsg*>(top->boundary);
        top->boundary = nullptr;
        for (unsigned i = 0; i < top->numChildren; ++i) {
            MimeMsg* child = top->children[i];
            vel::clear_text(child->boundary);
            child->boundary = reinterpret_cast<char*>(waiting);
            waiting = child;
        }
        FreeMsgNode(top);
        std::free(top);
    }
}

namespace vel {

bool same_token(const char* text, const char* wanted) { return text && ascii::equals_ignoring_case(text, wanted); }

bool has_type(const MimeMsg& record, const char* type, const char* subtype) {
    return same_token(record.contentType, type) && same_token(record.contentSubtype, subtype);
}

bool is_identity_encoded(const MimeMsg& record) {
    const char* encoding = record.contentTransferEncoding;
    return !encoding || same_token(encoding, "7bit") || same_token(encoding, "8bit") || same_token(encoding, "binary");
}

bool is_enclosed_message(const MimeMsg& record) {
    return has_type(record, "message", "rfc822") && is_identity_encoded(record);
}

}  // namespace vel
