#include "compare/structure/modIgnoreComments.h"

#include "app/Program.h"
#include "app/modStrings.h"
#include "compare/structure/TextRope.h"
#include "compare/structure/modCompareObjects.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::size_t longestText = std::size_t{4} << 20;

// A removal joins what stands before the comment to what stands behind it, and the two may form a new mark. So both
// strippers move the text byte by byte from what is still to be read to `done`, which never holds a mark, and look at
// its last two bytes: that finds the marks that a search from the text's start would find, in one pass.

void dropTrailingLf(std::string& text) {
  if (!text.empty() && text.back() == '\n') text.pop_back();
}

bool endsInMark(const std::string& text, char first, char second) {
  return text.size() >= 2 && text[text.size() - 2] == first && text.back() == second;
}

class BlockComments {
 public:
  explicit BlockComments(std::string_view text) : tail_(text) {}

  // Whether the text outgrew its bounds; what strip gives is of no use then.
  bool outgrown() const { return outgrown_; }

  // The text less its first `count` comments.
  std::string strip(long count) {
    while (count > 0 && moveToMark()) {
      --count;
      done_.resize(done_.size() - 2);
      if (!skipComment() && !repeatWhatWasDone()) {
        done_ += "/*";  // the same comment would be found again, and nothing would change
        break;
      }
    }
    done_.append(front_, inFront_).append(tail_, inTail_);
    return std::move(done_);
  }

 private:
  // Moves bytes to done_ until it ends in the mark. False at the end of the text.
  bool moveToMark() {
    while (inFront_ < front_.size() || inTail_ < tail_.size()) {
      done_ += inFront_ < front_.size() ? front_[inFront_++] : tail_[inTail_++];
      if (endsInMark(done_, '/', '*')) return true;
    }
    return false;
  }

  // Moves behind the end of the comment that begins with the mark just taken from done_. False when it has none.
  bool skipComment() {
    const std::size_t inFrontEnd = endIn(front_, inFront_);
    if (inFrontEnd != npos) {
      inFront_ = inFrontEnd;
    } else {
      // A front, once there, ends in the opening mark of a comment that ended neither at once nor later.
      const std::size_t inTailEnd = tailHasEnd_ ? endIn(tail_, inTail_) : npos;
      if (inTailEnd == npos) {
        tailHasEnd_ = false;
        return false;
      }
      inFront_ = front_.size();
      inTail_ = inTailEnd;
    }
    dropTrailingLf(done_);
    return true;
  }

  // Offset behind the next "*/" in what is still to be read of `text`; the mark's own star may be its first half.
  static std::size_t endIn(std::string_view text, std::size_t from) {
    if (from < text.size() && text[from] == '/') return from + 1;
    const std::size_t hit = text.find("*/", from);
    return hit == npos ? npos : hit + 2;
  }

  // A comment without an end: what precedes it is followed by the whole text less its first character. False when that
  // leaves the text as it is.
  bool repeatWhatWasDone() {
    if (done_.empty()) {
      done_ = "*";
      return true;
    }
    const std::size_t before = done_.size();
    std::size_t firstCharacter = 0;
    nextCodePoint(done_, firstCharacter);
    std::string again = done_.substr(firstCharacter);
    dropTrailingLf(done_);
    if (done_.size() + again.size() == before) {
      done_ += again;
      return false;
    }
    again += "/*";
    again.append(front_, inFront_);
    front_ = std::move(again);
    inFront_ = 0;
    outgrown_ = done_.size() + front_.size() + tail_.size() > longestText;
    return !outgrown_;
  }

  std::string done_;
  std::string front_;  // to be read first: repeated text
  std::size_t inFront_ = 0;
  std::string_view tail_;  // then the original's rest
  std::size_t inTail_ = 0;
  bool tailHasEnd_ = true;
  bool outgrown_ = false;
};

// Offset at which the text goes on behind the line comment whose mark ends at `from`. The LF of a CR LF stays.
std::size_t endOfLineComment(std::string_view text, std::size_t from, bool& hasCrLf) {
  if (hasCrLf) {
    const std::size_t crLf = text.find("\r\n", from);
    if (crLf != npos) return crLf + 1;
    hasCrLf = false;
  }
  const std::size_t lf = text.find('\n', from);
  return lf == npos ? text.size() : lf + 1;
}

std::string stripLineComments(std::string_view text, long count) {
  std::string done;
  done.reserve(text.size());
  bool hasCrLf = true;
  std::size_t at = 0;
  while (count > 0 && at < text.size()) {
    done += text[at++];
    if (!endsInMark(done, '-', '-')) continue;
    --count;
    done.resize(done.size() - 2);
    dropTrailingLf(done);
    at = endOfLineComment(text, at, hasCrLf);
  }
  return done.append(text, at);
}

using Mark = TextRope::Mark;

TextRope joined(const TextRope& text, std::uint64_t mark, const TextRope& rest) {
  const bool lf = mark > 0 && text.at(mark - 1) == '\n';
  return text.front(lf ? mark - 1 : mark) + rest;
}

TextRope withoutFirstCharacter(const TextRope& text) {
  const std::string head = text.head(4);
  std::size_t size = 0;
  nextCodePoint(head, size);
  return text.behind(size);
}

TextRope stripBlocks(TextRope text, long count) {
  for (; count > 0; --count) {
    const auto begin = text.find(Mark::BlockBegin);
    if (!begin) break;
    const auto end = text.find(Mark::BlockEnd, *begin);
    text = joined(text, *begin, end ? text.behind(*end + 2) : withoutFirstCharacter(text));
  }
  return text;
}

TextRope stripLines(TextRope text, long count) {
  for (; count > 0; --count) {
    const auto begin = text.find(Mark::Line);
    if (!begin) break;
    auto end = text.find(Mark::CrLf, *begin);
    if (!end) end = text.find(Mark::Lf, *begin);
    text = joined(text, *begin, end ? text.behind(*end + 1) : TextRope());
  }
  return text;
}

// What StripCommentsFromProc gives.
TextRope stripped(std::string_view strText) {
  const long blocks = CountOccurrences(strText, "/*");
  const long lines = CountOccurrences(strText, "--");
  if (blocks == 0 && lines == 0) return TextRope(std::string(strText));
  return stripLines(stripBlocks(TextRope(ReplaceChars(strText, "\n", "\r\n")), blocks), lines);
}

// The headers are in the first 500 characters behind the leading blanks.
void adjustHeaders(Program& program, TextRope& a, TextRope& b) {
  constexpr std::size_t enough = 4000;
  const auto headSize = [](const TextRope& text) {
    return static_cast<std::size_t>(std::min<std::uint64_t>(text.leadingBlanks(), longestText)) + enough;
  };
  std::string headA = a.head(headSize(a)), headB = b.head(headSize(b));
  const TextRope restA = a.behind(headA.size()), restB = b.behind(headB.size());
  AdjustCreateViewStatements(program, headA, headB);
  a = TextRope(std::move(headA)) + restA;
  b = TextRope(std::move(headB)) + restB;
}

}  // namespace

bool StripCommentsWithin(std::string_view strText, std::string& strStripped) {
  const long blocks = CountOccurrences(strText, "/*");
  const long lines = CountOccurrences(strText, "--");
  strStripped = blocks == 0 && lines == 0 ? std::string(strText) : ReplaceChars(strText, "\n", "\r\n");
  if (blocks > 0) {
    BlockComments comments(strStripped);
    std::string text = comments.strip(blocks);
    if (comments.outgrown()) return false;
    strStripped = std::move(text);
  }
  if (lines > 0) strStripped = stripLineComments(strStripped, lines);
  return true;
}

std::string StripCommentsFromProc(std::string_view strText) {
  std::string text;
  if (!StripCommentsWithin(strText, text))
    throw RuntimeError(errorNumber::outOfMemory, "Out of memory: comment marks without an end make the text too long.");
  return text;
}

bool SameWithoutComments(Program& program, std::string_view strA, std::string_view strB, bool blnViews) {
  const bool blnWords = program.settings.IgnoreWhitespace;
  // Case goes letter by letter, so that it can go first.
  const bool blnFold = blnWords && !program.settings.CaseSensitive;
  TextRope a = stripped(blnFold ? upperCase(strA) : std::string(strA));
  TextRope b = stripped(blnFold ? upperCase(strB) : std::string(strB));
  if (blnViews) adjustHeaders(program, a, b);
  return blnWords ? a.withoutBlanksAtEnds().sameWords(b.withoutBlanksAtEnds()) : a.same(b);
}

}  // namespace qrel
