/* The envelope of a queued message: who sends it, who receives it, and what they want to hear of its delivery
   (RFC 3461). Whoever makes these records owns their texts and keeps them until the queue has copied them. A text
   that is absent is empty, never null. */
#ifndef VEL_ENVELOPE_H
#define VEL_ENVELOPE_H

#include "vel/types.h"

#ifdef __cplusplus
#include <new>
#endif

/* How much of the message a report returns (RET, RFC 3461 section 4.3); any other value: not said. */
enum { VEL_RET_HDRS = 1, VEL_RET_FULL = 2 };

/* Which reports a recipient wants (NOTIFY, RFC 3461 section 4.1), as bits; 0: not said. */
enum { VEL_NOTIFY_NEVER = 1, VEL_NOTIFY_SUCCESS = 2, VEL_NOTIFY_FAILURE = 4, VEL_NOTIFY_DELAY = 8 };

/* The sender. The unnamed number and text are the submitter's own and handed on as they are. */
typedef struct _envFrom {
    const char* address;
    const char* envelopeId; /* ENVID */
    int32_t returnType;     /* RET */
    int32_t number;
    const char* text;
    const char* channel;
} _envFrom;

/* A recipient. The two unnamed texts are the submitter's own and handed on as they are. */
typedef struct _envRecip {
    const char* address;
    const char* originalRecipient; /* ORCPT */
    int32_t notify;                /* NOTIFY */
    const char* text;
    const char* text2;
} _envRecip;

#ifdef __cplusplus

/* A list of pointers that owns its nodes and not what they point at. One thread at a time. */
template <class T>
class cList {
  public:
    cList() = default;
    cList(const cList&) = delete;
    cList& operator=(const cList&) = delete;
    ~cList() {
        while (head_) {
            Node* const next = head_->next;
            delete head_;
            head_ = next;
        }
    }

    /* Appends an item, whatever the cursor stands on, and moves the cursor to it.
       Returns the item; null when memory runs out, and nothing has changed. */
    T Add(T item) {
        Node* const node = new (std::nothrow) Node{item, nullptr};
        if (!node) return nullptr;
        Node** end = cursor_ ? &cursor_->next : &head_;
        while (*end) end = &(*end)->next;
        *end = cursor_ = node;
        ++count_;
        return item;
    }

    /* Makes Next begin at the first item. */
    void Reset() { cursor_ = nullptr; }

    /* Moves to the next item, from a reset list to the first. Returns it; null behind the last, after which the
       list is reset. */
    T Next() {
        cursor_ = cursor_ ? cursor_->next : head_;
        return cursor_ ? cursor_->item : nullptr;
    }

    int32_t Count() const { return count_; }

  private:
    struct Node {
        T item;
        Node* next;
    };

    Node* head_ = nullptr;
    Node* cursor_ = nullptr;
    int32_t count_ = 0;
};

using EnvFromList = cList<_envFrom*>;
using EnvRecipList = cList<_envRecip*>;

#else

/* The same lists as C sees them. All zero is the empty list, whose cursor is reset. */
typedef struct EnvFromNode {
    _envFrom* item;
    struct EnvFromNode* next;
} EnvFromNode;

typedef struct EnvFromList {
    EnvFromNode* head;
    EnvFromNode* cursor;
    int32_t count;
} EnvFromList;

typedef struct EnvRecipNode {
    _envRecip* item;
    struct EnvRecipNode* next;
} EnvRecipNode;

typedef struct EnvRecipList {
    EnvRecipNode* head;
    EnvRecipNode* cursor;
    int32_t count;
} EnvRecipList;

#endif

/* What the queue is handed. The two numbers are the submitter's own and kept as they are. */
#ifdef __cplusplus
struct stEnvelope {
    int32_t number = 0; /* libvel leaves it zero */
    EnvFromList senders;
    EnvRecipList recipients;
    int32_t number2 = 0; /* libvel sets it to -1 */
};
#else
typedef struct stEnvelope {
    int32_t number;
    EnvFromList senders;
    EnvRecipList recipients;
    int32_t number2;
} stEnvelope;
#endif

#endif
