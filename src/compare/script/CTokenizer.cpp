#include "compare/script/CTokenizer.h"

#include <utility>

#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

void CTokenizer::SetText(std::string strNewText) {
  strText = std::move(strNewText);
  lngPos = 0;
}

void CTokenizer::GetNextToken(std::string& strToken, std::string& strDelimiter, bool& blnQuoted, bool& blnFound) {
  strToken.clear();
  strDelimiter.clear();
  blnQuoted = false;
  blnFound = trapWithBox(host_, "GetNextToken", false, [&] {
    strToken_.clear();
    enmState = State::stStart;
    // Standing on the last character counts as being at the end.
    if (lngPos + characterAt(lngPos).size() >= strText.size()) return false;
    bool blnGoOn = true;
    while (blnGoOn && lngPos < strText.size()) {
      strChar = characterAt(lngPos);
      switch (CharType()) {
        case Class::WhiteSpace:
          blnGoOn = HandleWhiteSpace();
          break;
        case Class::Separator:
          blnGoOn = HandleSeparator(strDelimiter);
          break;
        case Class::Quote:
          blnQuoted = true;
          blnGoOn = HandleQuote(strDelimiter);
          break;
        case Class::Token:
          blnGoOn = HandleToken();
          break;
        case Class::EndOfLine:
          blnGoOn = HandleEOF(strDelimiter);
          break;
      }
    }
    strToken = strToken_;
    return true;
  });
}

std::string_view CTokenizer::characterAt(std::size_t position) const {
  if (position >= strText.size()) return {};
  std::size_t behind = position;
  nextCodePoint(strText, behind);
  return std::string_view(strText).substr(position, behind - position);
}

CTokenizer::Class CTokenizer::CharType() const {
  const auto isIn = [this](const std::string& set) { return set.find(strChar) != std::string::npos; };
  if (isIn(QuoteChars)) return Class::Quote;
  if (isIn(SeparatorChars)) return Class::Separator;
  if (isIn(WhiteSpaceChars)) return Class::WhiteSpace;
  if (isIn(EOLChars)) return Class::EndOfLine;
  return Class::Token;
}

void CTokenizer::AppendToken() {
  if (enmState == State::stInQuote || (ConvertCase != 1 && ConvertCase != 2))
    strToken_ += strChar;
  else
    strToken_ += ConvertCase == 1 ? upperCase(strChar) : lowerCase(strChar);
}

bool CTokenizer::endWithCharacter(std::string& strDelimiter) {
  strDelimiter = strChar;
  return false;
}

bool CTokenizer::HandleWhiteSpace() {
  if (enmState == State::stInToken) enmState = State::stAfterToken;
  if (enmState == State::stInQuote) AppendToken();
  moveOn();
  return true;
}

bool CTokenizer::HandleSeparator(std::string& strDelimiter) {
  moveOn();
  if (enmState != State::stInQuote) return endWithCharacter(strDelimiter);
  AppendToken();
  return true;
}

bool CTokenizer::HandleQuote(std::string& strDelimiter) {
  // One that follows a token opens the next one, which begins with it.
  if (enmState == State::stInToken || enmState == State::stAfterToken) return endWithCharacter(strDelimiter);
  if (enmState == State::stStart) {
    strQuote = strChar;
    enmState = State::stInQuote;
  } else if (strChar == strQuote) {
    enmState = State::stAfterToken;
    strQuote.clear();
  } else {
    AppendToken();
  }
  moveOn();
  return true;
}

bool CTokenizer::HandleToken() {
  if (enmState == State::stAfterToken) return false;
  AppendToken();
  if (enmState == State::stStart) enmState = State::stInToken;
  moveOn();
  return true;
}

// Whatever the state: a quoted part doesn't outlive its line.
bool CTokenizer::HandleEOF(std::string& strDelimiter) {
  while (lngPos < strText.size()) {
    strChar = characterAt(lngPos);
    if (CharType() != Class::EndOfLine) break;
    strDelimiter = strChar;
    moveOn();
  }
  enmState = State::stInToken;
  return false;
}

}  // namespace qrel
