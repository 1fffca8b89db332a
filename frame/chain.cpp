#include "frame/chain.h"

#include <cstdlib>
#include <cstring>

extern "C" {

int appendString(ms** head, const char* text) {
    if (!head || !text) return 0;
    while (*head) head = &(*head)->next;
    *head = static_cast<ms*>(std::calloc(1, sizeof(ms)));
    if (!*head) return 0;
    (*head)->text = ::strdup(text);
    return (*head)->text != nullptr;
}

void freeStringChain(ms* head) {
    while (head) {
        ms* next = head->next;
        std::free(head->text);
        std::free(head);
        head = next;
    }
}

}  // extern "C"
