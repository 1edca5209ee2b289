#include "compare/structure/TextRope.h"

#include <algorithm>
#include <random>
#include <utility>

#include "platform/error.h"

namespace qrel {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t longest = std::uint64_t{1} << 62;
constexpr std::size_t leafBytes = 256;
constexpr Wide prime = (Wide{1} << 127) - 1;

constexpr std::string_view markTexts[] = {"/*", "*/", "--", "\r\n", "\n"};

Wide reduced(Wide number) {
  number = (number & prime) + (number >> 127);
  return number >= prime ? number - prime : number;
}

Wide added(Wide a, Wide b) { return reduced(a + b); }

// Two to the power of 127 is 1 here.
Wide multiplied(Wide a, Wide b) {
  const Wide aHigh = a >> 64, aLow = static_cast<std::uint64_t>(a);
  const Wide bHigh = b >> 64, bLow = static_cast<std::uint64_t>(b);
  const Wide middle = aHigh * bLow + aLow * bHigh;
  const Wide middleLow = middle & ((Wide{1} << 63) - 1);
  const Wide high = added(reduced(aHigh * bHigh * 2), middle >> 63);
  return added(high, added(reduced(middleLow << 64), reduced(aLow * bLow)));
}

Wide drawBase() {
  std::random_device device;
  Wide base = 0;
  for (int i = 0; i < 4; ++i) base = (base << 32) | device();
  return reduced(base) | 256;  // no byte's own value
}

Wide base() {
  static const Wide drawn = drawBase();
  return drawn;
}

// Of a text: its bytes as digits of a number, and the weight of what stands before it.
struct Fingerprint {
  Wide value = 0;
  Wide weight = 1;

  void append(char c) {
    value = added(multiplied(value, base()), static_cast<unsigned char>(c) + 1U);
    weight = multiplied(weight, base());
  }
  Fingerprint operator+(const Fingerprint& behind) const {
    return {added(multiplied(value, behind.weight), behind.value), multiplied(weight, behind.weight)};
  }
  bool operator==(const Fingerprint&) const = default;
};

bool isSpace(char c) { return c == ' ' || c == '\r' || c == '\n' || c == '\0' || c == '\t' || c == '\v'; }

// A text with one blank for each run of white space. `core` is what stands between the runs at its ends; a text of
// nothing but white space has only the leading one.
struct Words {
  Fingerprint core;
  bool leading = false;
  bool trailing = false;
  bool blank = true;  // no core

  void append(char c) {
    if (isSpace(c)) {
      (blank ? leading : trailing) = true;
      return;
    }
    if (trailing) core.append(' ');
    trailing = blank = false;
    core.append(c);
  }
  Words operator+(const Words& behind) const {
    if (behind.blank) {
      Words words = *this;
      if (behind.leading) (blank ? words.leading : words.trailing) = true;
      return words;
    }
    Words words = behind;
    if (blank) {
      words.leading = leading || behind.leading;
      return words;
    }
    Fingerprint gap;
    if (trailing || behind.leading) gap.append(' ');
    words.core = core + gap + behind.core;
    words.leading = leading;
    return words;
  }
  bool operator==(const Words&) const = default;
};

}  // namespace

struct TextRope::Node {
  Ptr left, right;  // both or none: a leaf
  std::shared_ptr<const std::string> owner;
  std::string_view text;  // of a leaf, never empty
  std::uint64_t size = 0;
  int height = 0;
  std::uint8_t marks = 0;  // a bit for each that is inside
  char first = 0, last = 0;
  bool blanksOnly = false;  // U+0020
  Fingerprint fingerprint;
  Words words;

  bool has(Mark mark) const { return (marks >> static_cast<int>(mark) & 1) != 0; }
};

TextRope::Ptr TextRope::leaf(std::shared_ptr<const std::string> owner, std::string_view text) {
  auto made = std::make_shared<Node>();
  made->owner = std::move(owner);
  made->text = text;
  made->size = text.size();
  made->first = text.front();
  made->last = text.back();
  made->blanksOnly = text.find_first_not_of(' ') == std::string_view::npos;
  for (std::size_t i = 0; i < std::size(markTexts); ++i)
    if (text.find(markTexts[i]) != std::string_view::npos) made->marks |= static_cast<std::uint8_t>(1U << i);
  for (const char c : text) {
    made->fingerprint.append(c);
    made->words.append(c);
  }
  return made;
}

TextRope::Ptr TextRope::node(const Ptr& left, const Ptr& right) {
  auto made = std::make_shared<Node>();
  made->left = left;
  made->right = right;
  made->size = left->size + right->size;
  made->height = std::max(left->height, right->height) + 1;
  made->first = left->first;
  made->last = right->last;
  made->blanksOnly = left->blanksOnly && right->blanksOnly;
  made->marks = left->marks | right->marks;
  const char seam[] = {left->last, right->first};
  for (std::size_t i = 0; i < std::size(markTexts); ++i)
    if (markTexts[i] == std::string_view(seam, 2)) made->marks |= static_cast<std::uint8_t>(1U << i);
  made->fingerprint = left->fingerprint + right->fingerprint;
  made->words = left->words + right->words;
  return made;
}

// Of two whose heights differ by two at most.
TextRope::Ptr TextRope::balanced(const Ptr& left, const Ptr& right) {
  if (left->height > right->height + 1) {
    if (left->left->height >= left->right->height) return node(left->left, node(left->right, right));
    return node(node(left->left, left->right->left), node(left->right->right, right));
  }
  if (right->height > left->height + 1) {
    if (right->right->height >= right->left->height) return node(node(left, right->left), right->right);
    return node(node(left, right->left->left), node(right->left->right, right->right));
  }
  return node(left, right);
}

TextRope::Ptr TextRope::join(const Ptr& left, const Ptr& right) {
  if (!left) return right;
  if (!right) return left;
  if (left->height > right->height + 1) return balanced(left->left, join(left->right, right));
  if (right->height > left->height + 1) return balanced(join(left, right->left), right->right);
  return node(left, right);
}

TextRope::Ptr TextRope::ofLeaves(const std::shared_ptr<const std::string>& owner, std::size_t begin, std::size_t end) {
  if (begin == end) return {};
  if (end - begin <= leafBytes) return leaf(owner, std::string_view(*owner).substr(begin, end - begin));
  const std::size_t middle = begin + (end - begin) / 2;
  return join(ofLeaves(owner, begin, middle), ofLeaves(owner, middle, end));
}

TextRope::TextRope(std::string text) {
  const auto owner = std::make_shared<const std::string>(std::move(text));
  root_ = ofLeaves(owner, 0, owner->size());
}

std::uint64_t TextRope::size() const { return root_ ? root_->size : 0; }

TextRope operator+(const TextRope& a, const TextRope& b) {
  if (a.size() + b.size() > longest)
    throw RuntimeError(errorNumber::outOfMemory,
                       "Out of memory: comment marks without an end make the text too long to be compared.");
  return TextRope(TextRope::join(a.root_, b.root_));
}

TextRope::Ptr TextRope::frontOf(const Ptr& of, std::uint64_t bytes) {
  if (!of || bytes == 0) return {};
  if (bytes >= of->size) return of;
  if (!of->left) return leaf(of->owner, of->text.substr(0, static_cast<std::size_t>(bytes)));
  if (bytes <= of->left->size) return frontOf(of->left, bytes);
  return join(of->left, frontOf(of->right, bytes - of->left->size));
}

TextRope::Ptr TextRope::behindOf(const Ptr& of, std::uint64_t bytes) {
  if (!of || bytes >= of->size) return {};
  if (bytes == 0) return of;
  if (!of->left) return leaf(of->owner, of->text.substr(static_cast<std::size_t>(bytes)));
  if (bytes >= of->left->size) return behindOf(of->right, bytes - of->left->size);
  return join(behindOf(of->left, bytes), of->right);
}

TextRope TextRope::front(std::uint64_t bytes) const { return TextRope(frontOf(root_, bytes)); }
TextRope TextRope::behind(std::uint64_t bytes) const { return TextRope(behindOf(root_, bytes)); }

std::optional<std::uint64_t> TextRope::findIn(const Node& in, Mark mark, std::uint64_t from) {
  if (from >= in.size || !in.has(mark)) return {};
  const std::string_view text = markTexts[static_cast<std::size_t>(mark)];
  if (!in.left) {
    const std::size_t hit = in.text.find(text, static_cast<std::size_t>(from));
    return hit == std::string_view::npos ? std::nullopt : std::optional<std::uint64_t>(hit);
  }
  const std::uint64_t seam = in.left->size;
  if (const auto hit = findIn(*in.left, mark, from)) return hit;
  if (text.size() == 2 && from < seam && in.left->last == text[0] && in.right->first == text[1]) return seam - 1;
  const auto hit = findIn(*in.right, mark, from > seam ? from - seam : 0);
  return hit ? std::optional<std::uint64_t>(seam + *hit) : std::nullopt;
}

std::optional<std::uint64_t> TextRope::find(Mark mark, std::uint64_t from) const {
  return root_ ? findIn(*root_, mark, from) : std::nullopt;
}

char TextRope::at(std::uint64_t offset) const {
  const Node* in = root_.get();
  while (in->left) {
    const bool inLeft = offset < in->left->size;
    if (!inLeft) offset -= in->left->size;
    in = (inLeft ? in->left : in->right).get();
  }
  return in->text[static_cast<std::size_t>(offset)];
}

void TextRope::appendHead(std::string& text, const Node& of, std::size_t most) {
  if (text.size() >= most) return;
  if (!of.left) {
    text += of.text.substr(0, most - text.size());
    return;
  }
  appendHead(text, *of.left, most);
  appendHead(text, *of.right, most);
}

std::string TextRope::head(std::size_t most) const {
  std::string text;
  if (root_) appendHead(text, *root_, most);
  return text;
}

std::uint64_t TextRope::leadingBlanks() const {
  std::uint64_t count = 0;
  const Node* in = root_.get();
  while (in) {
    if (in->blanksOnly) return count + in->size;
    if (!in->left) return count + in->text.find_first_not_of(' ');
    const bool skip = in->left->blanksOnly;
    if (skip) count += in->left->size;
    in = (skip ? in->right : in->left).get();
  }
  return count;
}

TextRope TextRope::withoutBlanksAtEnds() const {
  const TextRope rest = behind(leadingBlanks());
  std::uint64_t end = rest.size();
  for (const Node* in = rest.root_.get(); in;) {
    if (!in->left) {
      end -= in->text.size() - 1 - in->text.find_last_not_of(' ');
      break;
    }
    const bool skip = in->right->blanksOnly;
    if (skip) end -= in->right->size;
    in = (skip ? in->left : in->right).get();
  }
  return rest.front(end);
}

bool TextRope::same(const TextRope& other) const {
  if (!root_ || !other.root_) return size() == other.size();
  return size() == other.size() && root_->fingerprint == other.root_->fingerprint;
}

bool TextRope::sameWords(const TextRope& other) const {
  if (!root_ || !other.root_) return size() == other.size();
  return root_->words == other.root_->words;
}

}  // namespace qrel
