/// Names as files bring them, made fit to be shown: always valid UTF-8.
#ifndef IMPORT_TEXT_H
#define IMPORT_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kuvimport {

/// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates, nothing above
/// U+10FFFF).
bool IsUtf8(std::string_view bytes);

/// The bytes themselves when they are UTF-8, else each byte taken for the Latin-1 character of its
/// number: the exporters that write neither UTF-8 nor the format's escapes are almost always of
/// that kind. A NUL ends a name for every consumer behind the importers, so it becomes U+2400.
std::string ToUtf8(std::string_view bytes);

/// Without leading and trailing blanks.
std::string Trimmed(std::string_view text);

/// A name is a reader's stand-in, not the file's, when it refers to an internal entry
/// ("=>[0:1:1:2]").
bool IsReaderPlaceholder(std::string_view name);

/// For messages: control characters become blanks, runs of blanks one, and long texts are cut.
std::string OneLine(std::string_view text);

/// Cut at a character's border, with an ellipsis, when it has more than `longest` bytes.
std::string Shortened(std::string text, std::size_t longest);

/// The text between quotation marks, cut and in one line.
std::string Quoted(std::string_view text);

}  // namespace kuvimport

#endif
