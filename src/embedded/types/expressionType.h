// The type of an expression, as the server derives it from the types of its parts: what SELECT INTO and computed
// columns become, and in which type arithmetic is carried out.
#pragma once

#include <string_view>

#include "embedded/types/types.h"

namespace qrel::tsql {

// What is known of an expression's type before it runs. xtype 0: nothing; then `nullable` alone counts. Sizes as in
// TypeRef. `nullable` and `identity` are what a column made of it is.
struct ExpressionType {
  int xtype = 0;
  int xusertype = 0;
  int length = 0;
  int prec = 0;
  int scale = 0;
  bool nullable = true;
  bool identity = false;

  bool known() const { return xtype != 0; }
  bool isWhole() const;
  bool isDecimal() const { return xtype == xtype::Decimal || xtype == xtype::Numeric; }
  bool isMoney() const { return xtype == xtype::Money || xtype == xtype::SmallMoney; }
  // Arithmetic in it is exact and has a fraction.
  bool isExact() const { return isDecimal() || isMoney(); }
};

ExpressionType expressionType(const TypeRef& type);
// By the name of a system type; sizes as in systemTypeRef.
ExpressionType expressionType(std::string_view name, int size = 0, int scale = -1);
// The declared type that it is; of an alias type the base alone. `type` must be known.
TypeRef typeRef(const ExpressionType& type);
// Of a number as it is written: int, numeric(10,0) beyond int's range, numeric(3,2) of 1.50, float of 1e3.
ExpressionType literalType(std::string_view digits);

// The type of "a op b" for + - * / % & | ^. Unknown where one of them is, or where the server takes no such operator.
ExpressionType resultType(char operation, const ExpressionType& a, const ExpressionType& b);
// The type of a value that may come from either: CASE, COALESCE, UNION. One that is unknown leaves the other.
ExpressionType commonType(const ExpressionType& a, const ExpressionType& b);

}  // namespace qrel::tsql
