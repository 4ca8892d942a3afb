// Format notes, as Steam's files show them:
// - Quoted strings use C-style escapes, and paths are written with doubled backslashes
//   ("E:\\SteamLibrary"). Hand-edited files carry single ones, so an unknown escape pair
//   keeps both characters and "E:\SteamLibrary" still names the folder.
// - An escaped quote never ends a string; a file cut off inside a string ends the reading
//   there rather than handing a half path to the scanner.
// - The reader recurses only up to kMaxKeyValuesDepth, which also bounds the recursion of
//   the tree's destructor.
#include "stores/KeyValues.hpp"

#include "base/AsciiText.hpp"

namespace corvandell {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

// Reads pairs into `object` until its closing brace. False means the whole reading ends:
// the input ran out or something malformed came up.
bool readObject(KeyValuesTokenizer& tokens, KeyValuesNode& object, std::size_t depth) {
    for (;;) {
        const KeyValuesToken keyToken = tokens.next();
        if (keyToken == KeyValuesToken::CloseBrace) {
            return depth > 0; // a closing brace at the top has nothing to close
        }
        if (keyToken != KeyValuesToken::String) {
            return false;
        }
        std::string key = tokens.string();
        const KeyValuesToken valueToken = tokens.next();
        if (valueToken == KeyValuesToken::String) {
            object.entries.push_back({std::move(key), {false, tokens.string(), {}}});
            continue;
        }
        if (valueToken != KeyValuesToken::OpenBrace || depth + 1 >= kMaxKeyValuesDepth) {
            return false;
        }
        KeyValuesEntry& entry = object.entries.emplace_back();
        entry.key = std::move(key);
        entry.node.isObject = true;
        if (!readObject(tokens, entry.node, depth + 1)) {
            return false;
        }
    }
}

} // namespace

const KeyValuesNode* KeyValuesNode::find(std::string_view key) const {
    for (const auto& entry : entries) {
        if (equalsIgnoringAsciiCase(entry.key, key)) {
            return &entry.node;
        }
    }
    return nullptr;
}

std::string_view KeyValuesNode::text(std::string_view key) const {
    const KeyValuesNode* node = find(key);
    return node && !node->isObject ? std::string_view(node->value) : std::string_view();
}

const KeyValuesNode* KeyValuesNode::firstObject() const {
    for (const auto& entry : entries) {
        if (entry.node.isObject) {
            return &entry.node;
        }
    }
    return nullptr;
}

KeyValuesTokenizer::KeyValuesTokenizer(std::string_view text) : text_(text) {
    if (text_.starts_with("\xEF\xBB\xBF")) {
        position_ = 3;
    }
}

void KeyValuesTokenizer::skipBlanksAndComments() {
    while (position_ < text_.size()) {
        if (isBlank(text_[position_])) {
            ++position_;
        } else if (text_.substr(position_, 2) == "//") {
            const std::size_t lineEnd = text_.find('\n', position_);
            position_ = lineEnd == std::string_view::npos ? text_.size() : lineEnd + 1;
        } else {
            return;
        }
    }
}

KeyValuesToken KeyValuesTokenizer::next() {
    skipBlanksAndComments();
    if (position_ >= text_.size()) {
        return KeyValuesToken::End;
    }
    switch (text_[position_]) {
    case '{':
        ++position_;
        return KeyValuesToken::OpenBrace;
    case '}':
        ++position_;
        return KeyValuesToken::CloseBrace;
    case '"':
        ++position_;
        return readQuoted();
    default:
        return readBare();
    }
}

KeyValuesToken KeyValuesTokenizer::readQuoted() {
    string_.clear();
    while (position_ < text_.size()) {
        const char c = text_[position_++];
        if (c == '"') {
            return KeyValuesToken::String;
        }
        if (c != '\\') {
            string_.push_back(c);
            continue;
        }
        if (position_ >= text_.size()) {
            break;
        }
        const char escaped = text_[position_++];
        switch (escaped) {
        case '\\':
        case '"':
            string_.push_back(escaped);
            break;
        case 'n':
            string_.push_back('\n');
            break;
        case 't':
            string_.push_back('\t');
            break;
        case 'r':
            string_.push_back('\r');
            break;
        default:
            string_.push_back('\\');
            string_.push_back(escaped);
        }
    }
    position_ = text_.size();
    return KeyValuesToken::End;
}

KeyValuesToken KeyValuesTokenizer::readBare() {
    const std::size_t start = position_;
    while (position_ < text_.size()) {
        const char c = text_[position_];
        if (isBlank(c) || c == '{' || c == '}' || c == '"') {
            break;
        }
        ++position_;
    }
    string_.assign(text_.substr(start, position_ - start));
    return KeyValuesToken::String;
}

KeyValuesNode parseKeyValues(std::string_view text) {
    KeyValuesNode root;
    root.isObject = true;
    KeyValuesTokenizer tokens(text);
    readObject(tokens, root, 0);
    return root;
}

} // namespace corvandell
