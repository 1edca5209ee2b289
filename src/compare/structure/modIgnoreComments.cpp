#include "compare/structure/modIgnoreComments.h"

#include "app/modStrings.h"
#include "platform/error.h"

namespace qrel {

namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::size_t longestText = std::size_t{64} << 20;

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
    std::string again = done_.substr(1);
    dropTrailingLf(done_);
    if (done_.size() + again.size() == before) {
      done_ += again;
      return false;
    }
    again += "/*";
    again.append(front_, inFront_);
    front_ = std::move(again);
    inFront_ = 0;
    if (done_.size() + front_.size() + tail_.size() > longestText) {
      throw RuntimeError(errorNumber::outOfMemory, "Out of memory");
    }
    return true;
  }

  std::string done_;
  std::string front_;  // to be read first: repeated text
  std::size_t inFront_ = 0;
  std::string_view tail_;  // then the original's rest
  std::size_t inTail_ = 0;
  bool tailHasEnd_ = true;
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

}  // namespace

std::string StripCommentsFromProc(std::string_view strText) {
  const long blocks = CountOccurrences(strText, "/*");
  const long lines = CountOccurrences(strText, "--");
  if (blocks == 0 && lines == 0) return std::string(strText);
  std::string text = ReplaceChars(strText, "\n", "\r\n");
  if (blocks > 0) text = BlockComments(text).strip(blocks);
  if (lines > 0) text = stripLineComments(text, lines);
  return text;
}

}  // namespace qrel
