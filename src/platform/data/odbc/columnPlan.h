// The columns of a result: what they are to the program, and in which C type they are fetched.
#pragma once

#include <string_view>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/data/odbc/odbcApi.h"
#include "platform/data/provider.h"

namespace qrel::odbc {

enum class Form { Boolean, Integer, Real, Double, Decimal, Date, Time, Moment, Offset, Guid, Text, Binary };

struct ColumnPlan {
  Form form = Form::Text;
  SQLSMALLINT cType = SQL_C_WCHAR;
  std::size_t room = 0;  // bytes of the largest value, with the end of a text; 0: there is no such bound
};

// Of the result that a statement stands on. Raises nothing; `columns` and `plans` are parallel.
void describeColumns(SQLHSTMT statement, std::vector<ColumnInfo>& columns, std::vector<ColumnPlan>& plans);

// Appends one value, which isn't Null, in the text form that every provider gives it.
void appendValue(ColumnStore& store, std::size_t column, const ColumnPlan& plan, int scale, std::string_view bytes);

}  // namespace qrel::odbc
