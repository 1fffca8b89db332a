// The verbs below "vel types", each with a help of its own.
#ifndef VEL_TOOLS_VERBS_TYPES_VERBS_H
#define VEL_TOOLS_VERBS_TYPES_VERBS_H

#include "tools/text/json_line.h"
#include "tools/types/type_row.h"
#include "tools/verbs/verb.h"

namespace vel::command {

Exit run_types_list(Arguments arguments, Session& main);
Exit run_types_find(Arguments arguments, Session& main);
Exit run_types_of(Arguments arguments, Session& main);
Exit run_types_add(Arguments arguments, Session& main);
Exit run_types_remove(Arguments arguments, Session& main);
Exit run_types_import(Arguments arguments, Session& main);
Exit run_types_export(Arguments arguments, Session& main);

// What list and find show of types: a table, or an object each.
class TypesShown {
  public:
    TypesShown(bool json, Output& output) : json_(json), output_(output) {}
    void add(const TypeRow& row);
    void finish();

  private:
    const bool json_;
    Output& output_;
    std::vector<TypeRow> rows_;
};

// The paragraphs of help about them.
extern const char* const kAboutTypeJson;

}  // namespace vel::command

#endif
