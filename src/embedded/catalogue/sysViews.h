// The views "sys.*", known from version 9 on.
#pragma once

#include <span>

namespace qrel::tsql {

// A view and its query over the stored catalogue. "#c.name#" in a query is the number of a property of column c,
// "#i.name#" of index i, "#x.name#" of index x (of sys.indexes), "#h.name#" of the heap of object o, "#o.name#" of
// object o (of cat_objects), "#v.name#" of object o (of sys.objects), "#f.name#" of partition function f, "#d.name#" of
// data space d and "#g.name#" of full-text catalogue g; 0 where there is none. "#c.name|default#" is its text.
struct View {
  const char* name;
  const char* query;
};

// In the order in which they build on each other.
std::span<const View> sysViews();

}  // namespace qrel::tsql
