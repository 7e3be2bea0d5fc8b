#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>

#include <string>
#include <string_view>
#include <vector>

namespace String {

/// Splits `text` at every `separator`, keeping empty parts: n separators give n + 1 parts. An empty text has no parts.
/// `parts` is replaced.
ORVATOOL_API void ArrayFromString(const ustr& text, std::vector<ustr>& parts, wchar_t separator);

/// The parts in order, with `separator` between them.
ORVATOOL_API ustr ArrayToString(const std::vector<ustr>& parts, const wchar_t* separator = L", ");

/// `text` in the form in which searches compare: lower case, accents removed, letters such as "ø" and "ß" as "o" and
/// "ss", "m³" as "m3". Scripts without these stay as they are. Folding twice changes nothing more. Linear.
ORVATOOL_API ustr Fold(std::wstring_view text);

/// The words of a search text (white space parts them), folded.
ORVATOOL_API std::vector<ustr> SearchWords(std::wstring_view text);

/// True when the folded text holds every word as a substring.
ORVATOOL_API bool MatchesFolded(std::wstring_view foldedText, const std::vector<ustr>& words);

/// Three-way comparison as a user sorts names: by the user's locale, ignoring case, digits by their number ("2" <
/// "10"). -1, 0 or 1.
ORVATOOL_API int CompareForUser(std::wstring_view a, std::wstring_view b);

/// Bytes whose order (std::string's) is that of the texts under CompareForUser. For sorting very many texts: making a
/// key costs about as much as one comparison, and comparing keys next to nothing.
ORVATOOL_API std::string SortKeyForUser(std::wstring_view text);

}  // namespace String
