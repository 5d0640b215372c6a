// The parts of a path. A path is a Windows path; folders end at the last backslash or colon.
#pragma once

#include <string>
#include <string_view>

namespace quarda {

/// What follows the last backslash or colon.
std::string ExtractFileName(std::string_view path);
/// The folder without its closing backslash, which only a root ("C:\") keeps.
std::string ExtractFileDir(std::string_view path);
/// From the last "." to the end, dot included, in its own letter case; empty when a backslash or
/// colon follows that dot or there is none.
std::string ExtractFileExt(std::string_view path);
/// The path with that extension (written with its dot) in place of its own, or added to it.
std::string ChangeFileExt(std::string_view path, std::string_view extension);

/// The path with a backslash at its end; an empty path stays empty.
std::string AddTrailingBackslash(std::string_view path);
/// Folder and name with exactly one backslash between them; the name alone without a folder.
std::string JoinPath(std::string_view folder, std::string_view name);

/// The path as seen from a folder (written with its closing backslash): without what both share,
/// with a ".." for each further folder of the base. On another volume the path stays as it is.
std::string RelativePath(std::string_view baseFolder, std::string_view path);

/// What two paths on one volume have in common: "\\server\share", else the first two characters.
std::string_view PathRoot(std::string_view path) noexcept;

}  // namespace quarda
