// Takes a command line apart into named arguments: "/RunSavedComp 12" is the key "RunSavedComp" with the value "12".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/OneBased.h"

namespace qrel {

class CCommandArgs {
 public:
  std::string Delim;       // opens an argument
  std::string TestString;  // the command line

  // Fills the arguments anew; with an empty Delim or TestString those found earlier stay.
  void Parse();

  std::int16_t Count() const { return toInt16(arguments_.count()); }

  // By 1-based index; one outside 1 to Count raises error 9. An argument without a value has its key as value.
  const std::string& Key(long index) const { return arguments_[index].key; }
  const std::string& Value(long index) const { return arguments_[index].value; }

  // The value of the argument with the key, without regard to case, or, when k is a number, with that index. Empty when
  // there is none.
  std::string Item(std::string_view k) const;

 private:
  struct Argument {
    std::string key;
    std::string value;
  };
  Argument split(std::string_view strArg) const;

  OneBased<Argument> arguments_;
};

}  // namespace qrel
