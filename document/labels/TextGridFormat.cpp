#include "TextGridFormat.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

namespace sonmetra {
namespace {

// Neighbouring values may differ by this much and still count as touching:
// hand-made files write "1.2" where Praat wrote "1.2000000000000002".
constexpr double kTouchS = 1e-6;

struct Token {
    enum Kind { Number, Text, Flag, End } kind = End;
    double number = 0.0;
    std::string text;  // Text: the text with "" made one quote; Flag: between < and >
    int line = 0;
};

class ParseError {
public:
    explicit ParseError(std::string message) : m_message(std::move(message)) {}
    const std::string& message() const { return m_message; }

private:
    std::string m_message;
};

std::string lineSuffix(int line) { return " (line " + std::to_string(line) + ")"; }

bool isWordStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isWordChar(char c) { return isWordStart(c) || (c >= '0' && c <= '9'); }
bool isNumberChar(char c) { return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E'; }

// Reads the values one at a time, so that a long file needs no list of them.
class Lexer {
public:
    explicit Lexer(std::string_view text) : s(text) {}
    std::size_t bytesLeft() const { return s.size() - i; }

    Token read() {
        while (i < s.size()) {
            const char c = s[i];
            if (c == '\n') {
                ++line;
                ++i;
            } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v' || c == ':' || c == '=' ||
                       c == '?') {
                ++i;
            } else if (c == '!') {
                while (i < s.size() && s[i] != '\n') ++i;
            } else if (c == '[') {
                const std::size_t close = s.find_first_of("]\n", i);
                if (close == std::string_view::npos || s[close] != ']')
                    throw ParseError("a '[' is never closed" + lineSuffix(line));
                i = close + 1;
            } else if (isWordStart(c)) {
                while (i < s.size() && isWordChar(s[i])) ++i;
            } else if (c == '"') {
                return text();
            } else if (c == '<') {
                const std::size_t close = s.find_first_of(">\n", i);
                if (close == std::string_view::npos || s[close] != '>')
                    throw ParseError("a '<' is never closed" + lineSuffix(line));
                Token t{Token::Flag, 0.0, std::string(s.substr(i + 1, close - i - 1)), line};
                i = close + 1;
                return t;
            } else if (isNumberChar(c)) {
                return number();
            } else {
                throw ParseError("the character '" + std::string(1, c) + "' has no place in a TextGrid" +
                                 lineSuffix(line));
            }
        }
        return Token{Token::End, 0.0, std::string(), line};
    }

private:
    Token text() {
        Token t{Token::Text, 0.0, std::string(), line};
        ++i;
        for (;;) {
            // Up to the next quote at once; a doubled quote stands for one.
            const std::size_t quote = s.find('"', i);
            if (quote == std::string_view::npos)
                throw ParseError("a text that starts on line " + std::to_string(t.line) +
                                 " is never closed by a quote");
            const std::string_view part = s.substr(i, quote - i);
            line += static_cast<int>(std::count(part.begin(), part.end(), '\n'));
            t.text.append(part);
            i = quote + 1;
            if (i < s.size() && s[i] == '"') {
                t.text += '"';
                ++i;
                continue;
            }
            return t;
        }
    }

    Token number() {
        // The whole word, so that "2,5" is reported as it stands.
        const std::size_t start = i;
        while (i < s.size() && !std::isspace(static_cast<unsigned char>(s[i]))) ++i;
        std::string_view digits = s.substr(start, i - start);
        if (digits[0] == '+') digits.remove_prefix(1);
        Token t{Token::Number, 0.0, std::string(), line};
        const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), t.number);
        if (ec != std::errc() || end != digits.data() + digits.size() || !std::isfinite(t.number))
            throw ParseError("'" + std::string(s.substr(start, i - start)) + "' is not a number" + lineSuffix(line));
        return t;
    }

    std::string_view s;
    std::size_t i = 0;
    int line = 1;
};

class TextGridReader {
public:
    explicit TextGridReader(std::string_view text) : m_lexer(text), m_next(m_lexer.read()) {}

    LabelFile read() {
        const Token type = next();
        if (type.kind != Token::Text || type.text.rfind("ooTextFile", 0) != 0)
            throw ParseError("it is not a Praat text file");
        const Token cls = next();
        if (cls.kind != Token::Text) throw ParseError("its object class is missing" + lineSuffix(cls.line));
        if (cls.text != "TextGrid") throw ParseError("it holds a Praat " + cls.text + ", not a TextGrid");
        LabelFile file;
        file.xminS = number("the TextGrid's xmin");
        file.xmaxS = number("the TextGrid's xmax");
        if (file.xmaxS < file.xminS) throw ParseError("the TextGrid ends before it starts");
        const Token flag = next();
        if (flag.kind != Token::Flag || (flag.text != "exists" && flag.text != "absent"))
            throw ParseError("'<exists>' or '<absent>' is missing before the tiers" + lineSuffix(flag.line));
        const std::int64_t tierCount = flag.text == "exists" ? count("the number of tiers") : 0;
        for (std::int64_t t = 0; t < tierCount; ++t) file.tiers.push_back(readTier(static_cast<int>(t) + 1));
        const Token& rest = peek();
        if (rest.kind != Token::End) {
            if (file.tiers.empty())
                throw ParseError("the file goes on after saying it holds no tiers" + lineSuffix(rest.line));
            const LabelTier& last = file.tiers.back();
            throw ParseError("the file goes on after tier " + std::to_string(file.tiers.size()) + " \"" + last.name +
                             "\"" + lineSuffix(rest.line) + ": tier " + std::to_string(file.tiers.size()) +
                             " holds more " + itemsWord(last.kind) + " than its count (" +
                             std::to_string(last.items.size()) + "), or the file holds more tiers than its count (" +
                             std::to_string(tierCount) + ")");
        }
        return file;
    }

private:
    static std::string itemsWord(TierKind kind) { return kind == TierKind::Interval ? "intervals" : "points"; }

    const Token& peek() const { return m_next; }
    Token next() {
        Token t = std::move(m_next);
        m_next = t.kind == Token::End ? t : m_lexer.read();
        return t;
    }

    double number(const std::string& what) {
        const Token t = next();
        if (t.kind == Token::End) throw ParseError("the file ends before " + what);
        if (t.kind != Token::Number) throw ParseError(what + " is missing" + lineSuffix(t.line));
        return t.number;
    }

    // A count; the loops that use it stop at the end of the file, however large it is.
    std::int64_t count(const std::string& what) {
        const Token t = next();
        const double v = t.kind == Token::Number ? t.number : -1.0;
        if (t.kind == Token::End) throw ParseError("the file ends before " + what);
        if (v < 0.0 || v != std::floor(v) || v > 9e15) throw ParseError(what + " is not a count" + lineSuffix(t.line));
        return static_cast<std::int64_t>(v);
    }
    // Room for n items, no more than the rest of the file can hold (an
    // item takes at least two bytes per value).
    std::size_t plausible(std::int64_t n, std::size_t valuesEach) const {
        return std::min(static_cast<std::size_t>(n), m_lexer.bytesLeft() / (2 * valuesEach) + 1);
    }

    LabelTier readTier(int index) {
        const std::string where = "tier " + std::to_string(index);
        const Token cls = next();
        if (cls.kind == Token::End) throw ParseError("the file ends before " + where);
        if (cls.kind != Token::Text) {
            // A number where a tier's class should be: the tier before held
            // more items than its count said.
            if (index == 1) throw ParseError("the class of tier 1 is missing" + lineSuffix(cls.line));
            throw ParseError("tier " + std::to_string(index - 1) + " holds more items than its count says" +
                             lineSuffix(cls.line));
        }
        LabelTier tier;
        if (cls.text == "IntervalTier")
            tier.kind = TierKind::Interval;
        else if (cls.text == "TextTier")
            tier.kind = TierKind::Point;
        else
            throw ParseError(where + " is of the unknown class \"" + cls.text + "\"" + lineSuffix(cls.line));
        const Token name = next();
        if (name.kind != Token::Text) throw ParseError("the name of " + where + " is missing" + lineSuffix(name.line));
        tier.name = name.text;
        const std::string named = where + " \"" + tier.name + "\"";
        tier.xminS = number("the xmin of " + named);
        tier.xmaxS = number("the xmax of " + named);
        if (tier.xmaxS < tier.xminS) throw ParseError(named + " ends before it starts");
        const bool intervals = tier.kind == TierKind::Interval;
        const std::int64_t n = count("the number of " + itemsWord(tier.kind) + " of " + named);
        tier.items.reserve(plausible(n, intervals ? 3 : 2));
        for (std::int64_t k = 1; k <= n; ++k) {
            auto item = [&] {
                return std::string(intervals ? "interval " : "point ") + std::to_string(k) + " of " +
                       std::to_string(n) + " of " + named;
            };
            auto fewer = [&](const Token& t) {
                if (t.kind == Token::End)
                    return ParseError("the file ends in " + named + " after " + std::to_string(k - 1) + " of its " +
                                      std::to_string(n) + " " + itemsWord(tier.kind));
                return ParseError(named + " holds fewer " + itemsWord(tier.kind) + " than its count (" +
                                  std::to_string(n) + ")" + lineSuffix(t.line));
            };
            TierItem it;
            const Token a = next();
            if (a.kind != Token::Number) throw fewer(a);
            it.startS = a.number;
            if (intervals) {
                const Token b = next();
                if (b.kind != Token::Number) throw fewer(b);
                it.endS = b.number;
            } else {
                it.endS = it.startS;
            }
            const Token text = next();
            if (text.kind != Token::Text) throw fewer(text);
            it.text = text.text;
            if (intervals) {
                if (it.endS < it.startS) throw ParseError(item() + " ends before it starts" + lineSuffix(text.line));
                if (!tier.items.empty() && it.startS < tier.items.back().endS - kTouchS)
                    throw ParseError(item() + " starts before the interval before it ends" + lineSuffix(text.line));
            }
            tier.items.push_back(std::move(it));
        }
        if (!intervals)
            std::stable_sort(tier.items.begin(), tier.items.end(),
                             [](const TierItem& x, const TierItem& y) { return x.startS < y.startS; });
        return tier;
    }

    Lexer m_lexer;
    Token m_next;
};

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
    return out;
}

}  // namespace

std::string praatNumber(double v) {
    if (v == 0.0) return "0";  // never "-0"
    char buf[64];
    for (int digits = 15; digits <= 17; ++digits) {
        const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, digits);
        if (ec != std::errc()) break;
        double back = 0.0;
        std::from_chars(buf, end, back);
        if (back == v || digits == 17) return std::string(buf, end);
    }
    return "0";
}

bool isPraatTextFile(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && text.substr(start, 9) == "File type";
}

std::optional<LabelFile> parseTextGrid(std::string_view text, std::string& error) {
    // One line ending for all: texts spanning lines then read the same
    // whichever system wrote the file.
    std::string normalised;
    if (text.find('\r') != std::string_view::npos) {
        normalised.reserve(text.size());
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\r') {
                normalised += '\n';
                if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
            } else {
                normalised += text[i];
            }
        }
        text = normalised;
    }
    try {
        TextGridReader reader(text);
        return reader.read();
    } catch (const ParseError& e) {
        error = e.message();
        return std::nullopt;
    }
}

std::string formatTextGrid(const LabelFile& file) {
    std::string out;
    auto line = [&out](const std::string& indent, const std::string& text) { out += indent + text + "\n"; };
    line("", "File type = \"ooTextFile\"");
    line("", "Object class = \"TextGrid\"");
    line("", "");
    line("", "xmin = " + praatNumber(file.xminS) + " ");
    line("", "xmax = " + praatNumber(file.xmaxS) + " ");
    line("", file.tiers.empty() ? "tiers? <absent> " : "tiers? <exists> ");
    if (file.tiers.empty()) return out;
    line("", "size = " + std::to_string(file.tiers.size()) + " ");
    line("", "item []: ");
    const std::string i1(4, ' '), i2(8, ' '), i3(12, ' ');
    for (std::size_t t = 0; t < file.tiers.size(); ++t) {
        const LabelTier& tier = file.tiers[t];
        const bool intervals = tier.kind == TierKind::Interval;
        line(i1, "item [" + std::to_string(t + 1) + "]:");
        line(i2, std::string("class = ") + (intervals ? "\"IntervalTier\" " : "\"TextTier\" "));
        line(i2, "name = " + quoted(tier.name) + " ");
        line(i2, "xmin = " + praatNumber(tier.xminS) + " ");
        line(i2, "xmax = " + praatNumber(tier.xmaxS) + " ");
        const std::string items = intervals ? "intervals" : "points";
        line(i2, items + ": size = " + std::to_string(tier.items.size()) + " ");
        for (std::size_t k = 0; k < tier.items.size(); ++k) {
            const TierItem& it = tier.items[k];
            line(i2, items + " [" + std::to_string(k + 1) + "]:");
            if (intervals) {
                line(i3, "xmin = " + praatNumber(it.startS) + " ");
                line(i3, "xmax = " + praatNumber(it.endS) + " ");
                line(i3, "text = " + quoted(it.text) + " ");
            } else {
                line(i3, "number = " + praatNumber(it.startS) + " ");
                line(i3, "mark = " + quoted(it.text) + " ");
            }
        }
    }
    return out;
}

}  // namespace sonmetra
