#pragma once

namespace ticpp::detail {

// Walks a zero-terminated document as TinyXML's parser will, without recursion, and throws when that would nest deeper
// than kMaxDepth, meet more than kMaxAttributes, or lose its place.
//
// The two must agree on where every element begins, or input could hide its depth from this scan. So the scan follows
// the parser's rules, not XML's, and refuses what the parser reads in some surprising way.
void CheckDocument(const char* text);

// Whether every byte that begins a character of several is followed by the rest of it, as the parser takes for granted.
bool IsUtf8(const char* text);

}  // namespace ticpp::detail
