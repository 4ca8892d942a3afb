// A one-pass state machine over the JSON grammar. The only memory it takes is the stack
// of open brackets, one byte each, which the depth cap bounds.
//
// "Cut short" and "malformed" are kept apart because they mean different things for our
// files: a text that ends inside a value is what a crash or a full disk leaves behind,
// while a bad byte in the middle points at an editor or at damage to the disk itself.
#include "api/JsonWellFormed.hpp"

#include <array>
#include <string>

namespace corvandell {

namespace {

// What may come next, given what came before.
enum class Expect {
    Value,        // after ":" or a "," in an array, and at the start
    ValueOrClose, // just after "["
    Key,          // after a "," in an object
    KeyOrClose,   // just after "{"
    Colon,        // after a key
    CommaOrClose, // after a value inside a container
    End,          // after the top-level value: only white space may follow
};

constexpr std::array<std::string_view, 3> kLiterals{"true", "false", "null"};

bool isJsonSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

class Checker {
public:
    Checker(std::string_view text, std::size_t maxDepth) : text_(text), maxDepth_(maxDepth) {}

    JsonCheck run() {
        if (text_.starts_with("\xEF\xBB\xBF")) {
            pos_ = 3; // Notepad's UTF-8 mark on a hand-edited file
        }
        skipSpace();
        if (pos_ == text_.size()) {
            return {JsonShape::Empty, pos_};
        }
        Expect expect = Expect::Value;
        for (;;) {
            skipSpace();
            if (pos_ == text_.size()) {
                return {expect == Expect::End ? JsonShape::WellFormed : JsonShape::CutShort, pos_};
            }
            const JsonShape step = advance(expect);
            if (step != JsonShape::WellFormed) {
                return {step, pos_};
            }
        }
    }

private:
    JsonShape advance(Expect& expect) {
        const char c = text_[pos_];
        switch (expect) {
        case Expect::ValueOrClose:
            if (c == ']') {
                return close(expect);
            }
            [[fallthrough]];
        case Expect::Value:
            return scanValue(expect);
        case Expect::KeyOrClose:
            if (c == '}') {
                return close(expect);
            }
            [[fallthrough]];
        case Expect::Key:
            if (c != '"') {
                return JsonShape::Malformed;
            }
            expect = Expect::Colon;
            return scanString();
        case Expect::Colon:
            if (c != ':') {
                return JsonShape::Malformed;
            }
            ++pos_;
            expect = Expect::Value;
            return JsonShape::WellFormed;
        case Expect::CommaOrClose:
            if (c == ',') {
                ++pos_;
                expect = open_.back() == '{' ? Expect::Key : Expect::Value;
                return JsonShape::WellFormed;
            }
            if (c == (open_.back() == '{' ? '}' : ']')) {
                return close(expect);
            }
            return JsonShape::Malformed;
        case Expect::End:
            return JsonShape::Malformed;
        }
        return JsonShape::Malformed;
    }

    JsonShape scanValue(Expect& expect) {
        const char c = text_[pos_];
        if (c == '{' || c == '[') {
            if (open_.size() >= maxDepth_) {
                return JsonShape::TooDeep;
            }
            open_.push_back(c);
            ++pos_;
            expect = c == '{' ? Expect::KeyOrClose : Expect::ValueOrClose;
            return JsonShape::WellFormed;
        }
        expect = afterValue();
        if (c == '"') {
            return scanString();
        }
        if (c == '-' || isDigit(c)) {
            return scanNumber();
        }
        return scanLiteral();
    }

    JsonShape close(Expect& expect) {
        open_.pop_back();
        ++pos_;
        expect = afterValue();
        return JsonShape::WellFormed;
    }

    Expect afterValue() const { return open_.empty() ? Expect::End : Expect::CommaOrClose; }

    // pos_ is on the opening quote; leaves it after the closing one.
    JsonShape scanString() {
        for (++pos_; pos_ < text_.size(); ++pos_) {
            if (text_[pos_] == '"') {
                ++pos_;
                return JsonShape::WellFormed;
            }
            if (text_[pos_] == '\\' && ++pos_ == text_.size()) {
                break;
            }
        }
        return JsonShape::CutShort;
    }

    // -? (0 | [1-9][0-9]*) (. [0-9]+)? ([eE] [+-]? [0-9]+)?
    JsonShape scanNumber() {
        if (text_[pos_] == '-') {
            ++pos_;
        }
        if (!atDigit()) {
            return endOrMalformed();
        }
        if (text_[pos_] == '0') {
            ++pos_;
        } else {
            skipDigits();
        }
        if (pos_ < text_.size() && text_[pos_] == '.') {
            ++pos_;
            if (!atDigit()) {
                return endOrMalformed();
            }
            skipDigits();
        }
        if (pos_ < text_.size() && (text_[pos_] == 'e' || text_[pos_] == 'E')) {
            ++pos_;
            if (pos_ < text_.size() && (text_[pos_] == '+' || text_[pos_] == '-')) {
                ++pos_;
            }
            if (!atDigit()) {
                return endOrMalformed();
            }
            skipDigits();
        }
        return JsonShape::WellFormed;
    }

    JsonShape scanLiteral() {
        for (const std::string_view word : kLiterals) {
            if (text_[pos_] != word.front()) {
                continue;
            }
            for (const char expected : word) {
                if (pos_ == text_.size()) {
                    return JsonShape::CutShort;
                }
                if (text_[pos_] != expected) {
                    return JsonShape::Malformed;
                }
                ++pos_;
            }
            return JsonShape::WellFormed;
        }
        return JsonShape::Malformed;
    }

    bool atDigit() const { return pos_ < text_.size() && isDigit(text_[pos_]); }

    void skipDigits() {
        while (atDigit()) {
            ++pos_;
        }
    }

    JsonShape endOrMalformed() const {
        return pos_ == text_.size() ? JsonShape::CutShort : JsonShape::Malformed;
    }

    void skipSpace() {
        while (pos_ < text_.size() && isJsonSpace(text_[pos_])) {
            ++pos_;
        }
    }

    std::string_view text_;
    std::size_t maxDepth_;
    std::size_t pos_ = 0;
    std::string open_; // "{" and "[" of the containers still open, innermost last
};

} // namespace

JsonCheck checkJsonWellFormed(std::string_view text, std::size_t maxDepth) {
    return Checker(text, maxDepth).run();
}

} // namespace corvandell
