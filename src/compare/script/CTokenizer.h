// A scanner that cuts a text into tokens under four character classes. It knows nothing of what the text means.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qrel {

class Host;

// A token ends at blanks, at a separator, at a quote or at a line's end. Used for one text after the other: set the
// character sets, then a text, then take tokens until there are none. A character in two sets is of the first of these
// classes: quote, separator, white space, end of line. Errors are shown in a box titled with the operation's name.
class CTokenizer {
 public:
  explicit CTokenizer(Host& host) : host_(host) {}

  std::int32_t ConvertCase = 0;   // 1: tokens in upper case, 2: in lower case; what stands in quotes keeps its case
  std::string EOLChars = "\r\n";  // end a line, and with it any token
  std::string QuoteChars;         // open and close a quoted part
  std::string SeparatorChars;     // end a token and are handed back as its delimiter
  std::string WhiteSpaceChars = " \t";

  const std::string& Text() const { return strText; }
  // The scan starts over, at the text's first character.
  void SetText(std::string strNewText);

  // The next token, without its quotes. strDelimiter: the separator, quote or last end-of-line character that ended it;
  // empty at the text's end and where blanks did. blnQuoted: a quote was met on the way, even one that belongs to the
  // token behind it. blnFound False: there is nothing more. Tokens can be empty: between two separators, at an empty
  // line. A text's last character alone is never found, so a last token of one character is lost.
  void GetNextToken(std::string& strToken, std::string& strDelimiter, bool& blnQuoted, bool& blnFound);

 private:
  enum class State { stStart, stInToken, stInQuote, stAfterToken };
  enum class Class { WhiteSpace, Separator, Quote, Token, EndOfLine };

  // Each handles the current character as the state has it. True: read on. Only who has taken the character moves on.
  bool HandleWhiteSpace();
  bool HandleSeparator(std::string& strDelimiter);
  bool HandleQuote(std::string& strDelimiter);
  bool HandleToken();
  bool HandleEOF(std::string& strDelimiter);

  Class CharType() const;
  void AppendToken();
  std::string_view characterAt(std::size_t position) const;  // empty beyond the end
  bool endWithCharacter(std::string& strDelimiter);
  void moveOn() { lngPos += strChar.size(); }

  Host& host_;
  std::string strText;
  std::size_t lngPos = 0;  // byte offset of the next character
  std::string_view strChar;
  std::string strToken_;
  std::string strQuote;
  State enmState = State::stStart;
};

}  // namespace qrel
