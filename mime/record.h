// Records of entities, and the tree that they form.
#ifndef VEL_MIME_RECORD_H
#define VEL_MIME_RECORD_H

#include "vel/mime.h"

// A zeroed record with a copy of the message file's path; null for a null path or without memory.
MimeMsg* AllocateNewMsg(const char* path);

// Makes a record the last child of another: the parent's nodeKind becomes 1, the child's 2. Returns
// 0; -1 for a null argument or without memory. A 65,536th child stays unlinked, as a child all the
// same.
int AddMsgNodeToTree(MimeMsg* parent, MimeMsg* child);

// Frees what a record owns, but neither its children nor the record, and zeroes its positions.
void FreeMsgNode(MimeMsg* record);

// Frees a record and everything below it. A record stands in a tree once.
void FreeMsgTree(MimeMsg** record);

namespace vel {

// Whether a text is there and is this token, letter case aside.
bool same_token(const char* text, const char* wanted);

// Whether an entity is of this type, letter case aside.
bool has_type(const MimeMsg& record, const char* type, const char* subtype);

// Whether the body stands in the file as it is: no transfer encoding, or one that changes nothing.
bool is_identity_encoded(const MimeMsg& record);

// Whether the body is a message that may be looked into.
bool is_enclosed_message(const MimeMsg& record);

}  // namespace vel

#endif
