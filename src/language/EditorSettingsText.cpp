#include "language/EditorSettingsText.h"

namespace korvane {
namespace {

constexpr wchar_t kSection[] = L"Internationalization";
constexpr wchar_t kByteOrderMark = 0xFEFF;

// Calls `visit` with each line of `text` without its line feed. A final piece without a
// line feed is a line too; an empty text has none.
template <typename Visitor>
void ForEachLine(TextView text, Visitor visit)
{
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = text.find(L'\n', begin);
        if (end == TextView::npos) {
            visit(text.substr(begin));
            return;
        }
        visit(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

// A trimmed line "[name]" gives true and the name, untrimmed.
bool ReadSectionHeader(TextView trimmed, TextView& name)
{
    if (trimmed.size() < 2 || trimmed.front() != L'[' || trimmed.back() != L']') {
        return false;
    }
    name = trimmed.substr(1, trimmed.size() - 2);
    return true;
}

bool IsLanguageSectionName(TextView name) noexcept
{
    return EqualsIgnoringCase(name, kSection);
}

bool IsLanguageKey(TextView key) noexcept
{
    return EqualsIgnoringCase(key, L"Language") || EqualsIgnoringCase(key, L"Culture");
}

Text Unquoted(Text value)
{
    if (value.size() > 1 && value.front() == L'"' && value.back() == L'"') {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

}  // namespace

bool DecodeSettingsBytes(BytesView bytes, SettingsText& decoded)
{
    decoded = SettingsText{};
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE) {
        decoded.utf16 = true;
        decoded.text.reserve((bytes.size() - 2) / 2);
        for (size_t index = 2; index + 1 < bytes.size(); index += 2) {
            decoded.text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[index]) |
                (static_cast<unsigned char>(bytes[index + 1]) << 8)));
        }
        return true;
    }
    decoded.text = Utf8ToText(bytes);
    if (!decoded.text.empty() && decoded.text.front() == kByteOrderMark) {
        decoded.text.erase(0, 1);
    }
    return bytes.empty() || !decoded.text.empty();
}

Bytes EncodeSettingsText(const SettingsText& settings)
{
    if (!settings.utf16) {
        return TextToUtf8(settings.text);
    }
    Bytes bytes;
    bytes.reserve(2 + settings.text.size() * 2);
    bytes.push_back(static_cast<char>(0xFF));
    bytes.push_back(static_cast<char>(0xFE));
    for (const wchar_t unit : settings.text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>((unit >> 8) & 0xFF));
    }
    return bytes;
}

Text FindLanguageSetting(TextView text)
{
    bool inSection = false;
    Text language;
    Text culture;
    ForEachLine(text, [&](TextView line) {
        const Text trimmed = TrimText(line);
        if (trimmed.empty() || trimmed.front() == L';' || trimmed.front() == L'#') {
            return;
        }
        TextView name;
        if (ReadSectionHeader(trimmed, name)) {
            inSection = IsLanguageSectionName(name);
            return;
        }
        const size_t equals = trimmed.find(L'=');
        if (!inSection || equals == Text::npos) {
            return;
        }
        const Text key = TrimText(TextView(trimmed).substr(0, equals));
        if (EqualsIgnoringCase(key, L"Language")) {
            language = Unquoted(TrimText(TextView(trimmed).substr(equals + 1)));
        } else if (EqualsIgnoringCase(key, L"Culture")) {
            culture = Unquoted(TrimText(TextView(trimmed).substr(equals + 1)));
        }
    });
    return language.empty() ? culture : language;
}

Text RewriteLanguageSetting(TextView text, TextView languageCode)
{
    Text output;
    output.reserve(text.size() + text.size() / 16 + 64);
    bool inSection = false;
    bool sectionSeen = false;
    bool written = false;
    const auto appendBlock = [&] {
        if (!written) {
            output.append(L"Language=").append(languageCode).append(L"\r\nCulture=\r\n");
            written = true;
        }
    };
    ForEachLine(text, [&](TextView line) {
        if (!line.empty() && line.back() == L'\r') {
            line.remove_suffix(1);
        }
        const Text trimmed = TrimText(line);
        TextView name;
        if (ReadSectionHeader(trimmed, name)) {
            // The block closes the section it belongs to, ahead of the next header.
            if (inSection) {
                appendBlock();
            }
            inSection = IsLanguageSectionName(name);
            sectionSeen = sectionSeen || inSection;
        } else if (inSection) {
            const size_t equals = trimmed.find(L'=');
            if (equals != Text::npos && IsLanguageKey(TrimText(TextView(trimmed).substr(0, equals)))) {
                appendBlock();
                return;
            }
        }
        output.append(line).append(L"\r\n");
    });
    if (!sectionSeen) {
        output.append(L"\r\n[Internationalization]\r\n");
    }
    appendBlock();
    return output;
}

}  // namespace korvane
