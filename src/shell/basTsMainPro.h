#pragma once

// Program-wide routines shared by every window: file and folder tests, path splitting and the
// shortened form of a path used in captions and menus. On this system "/" is the path separator
// and there are no drive letters.

#include <QString>

namespace basTsMainPro {

// True if `path` names a regular file that can be opened for reading. A folder is not a file.
bool FileExists(const QString& path);

// True if `path` names an existing folder.
bool FolderExists(const QString& path);

// Pieces of a path:
//   0, 3  folder, ending in "/"            4  name and extension
//   1     full path without extension      5  name
//   2     drive (always empty here)        6  extension with its dot
// A part outside 0..6, a path over 255 characters, or one that starts with "$" or a blank gives "".
inline constexpr int MaxParsedPathLength = 255;
QString ParseFileSpec(const QString& path, int part);

// A path shortened for display. With four or more "/" it keeps the text up to the second "/",
// then "/...../", then the name and extension. If that is still longer than `maxLen` it becomes the
// first 3 characters, "......", and the last maxLen - 9 characters.
inline constexpr int DisplayPathLength = 80; // captions and menus
QString ShortenPathForDisplay(const QString& path, int maxLen);

// The program's folder, ending in "/". It is the executable's folder unless a test or an
// installation has set another one; SetAppFolder("") goes back to the executable's folder.
QString AppFolder();
void SetAppFolder(const QString& folder);

} // namespace basTsMainPro
