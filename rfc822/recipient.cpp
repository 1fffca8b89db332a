// The records of parsed addresses.
#include <string_view>

#include "frame/at_boundary.h"
#include "frame/owned.h"
#include "vel/rfc822.h"

extern "C" {

recipient* AllocateRecipient(void) {
    return vel::at_boundary<recipient*>(nullptr, [] { return vel::make_zeroed<recipient>().release(); });
}

// The copy is made first: the text may be the field's own.
int AssignRp(const char* text, char** field) {
    if (!field) return 0;
    const auto clear = [=] { vel::clear_text(*field); };
    return vel::at_boundary(0, clear, [=] {
        vel::assign_text(*field, text ? vel::copy_text(text) : nullptr);
        return 1;
    });
}

void Clear_RP(recipient* record) {
    if (!record) return;
    for (char** field :
         {&record->canon, &record->orig, &record->phrase, &record->comment, &record->local, &record->domain}) {
        vel::clear_text(*field);
    }
}

void Clear_RT(RecipTbl* table) {
    if (!table) return;
    for (recipient* record = table->first; record;) {
        const vel::COwned<recipient> done(record);
        record = record->next;
        Clear_RP(done.get());
    }
    *table = {};
}

}  // extern "C"
