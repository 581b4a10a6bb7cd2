#pragma once
// The text of the editor's EditorSettings.ini as the launcher sees it: decoding its bytes,
// finding the language in [Internationalization], and rewriting that one setting while
// every other line stays as it was.

#include "foundation/Text.h"

namespace korvane {

struct SettingsText {
    Text text;
    bool utf16 = false;  // the file began with the UTF-16 LE mark and is written back so
};

// UTF-16 LE after the mark FF FE (a lone last byte ignored), else strict UTF-8 with any
// leading mark dropped. False when bytes were there but gave no text: malformed UTF-8, or
// UTF-8 that is only a mark. A file of a lone UTF-16 mark is a valid empty text.
bool DecodeSettingsBytes(BytesView bytes, SettingsText& decoded);
// The bytes to write: FF FE and UTF-16 LE, or UTF-8 without a mark.
Bytes EncodeSettingsText(const SettingsText& settings);

// The value of Language in [Internationalization], else that of Culture; the last line of
// each counts. Empty when neither holds a value.
Text FindLanguageSetting(TextView text);

// The text with the language block "Language=<code>" and an empty "Culture=" standing where
// the section's first Language or Culture line stood (else at the section's end, or in a new
// section at the end of the text); every other Language and Culture line of any
// [Internationalization] section goes. All other lines stay, each ended by CR LF.
Text RewriteLanguageSetting(TextView text, TextView languageCode);

}  // namespace korvane
