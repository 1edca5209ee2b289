#include "platform/visibleText.h"

#include <cstdio>

#include "platform/text.h"

namespace qrel {

namespace {

// Bidirectional marks, zero-width characters, separators, tags: they show as nothing and change what is around them.
bool isInvisible(char32_t c) {
  return c == 0xAD || c == 0x61C || c == 0x180E || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) || (c >= 0xE0000 && c <= 0xE007F);
}

void appendEscape(std::string& out, const char* format, char32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, format, static_cast<unsigned>(number));
  out += text;
}

void appendVisible(std::string& out, char32_t c, std::string_view bytes) {
  if (c == '\n' || c == '\r' || c == '\t')
    out += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t";
  else if (c < ' ' || (c >= 0x7F && c < 0xA0))
    appendEscape(out, "\\x%02X", c);
  else if (c == 0xFFFD && bytes.size() == 1)
    appendEscape(out, "\\x%02X", static_cast<unsigned char>(bytes.front()));
  else if (isInvisible(c))
    appendEscape(out, c > 0xFFFF ? "\\U%08X" : "\\u%04X", c);
  else
    out += bytes;
}

std::string visible(std::string_view text, bool lines) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    const char32_t c = nextCodePoint(text, at);
    const bool kept = lines && (c == '\n' || c == '\t' || (c == '\r' && text.substr(at).starts_with('\n')));
    if (kept)
      out += static_cast<char>(c);
    else
      appendVisible(out, c, text.substr(begin, at - begin));
  }
  return out;
}

}  // namespace

std::string visibleText(std::string_view text) { return visible(text, false); }
std::string visibleLines(std::string_view text) { return visible(text, true); }

}  // namespace qrel
