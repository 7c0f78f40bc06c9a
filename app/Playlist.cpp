#include "app/Playlist.h"

#include "app/TextFile.h"
#include "app/TextLines.h"
#include "platform/AtomicFile.h"
#include "platform/CascadeFile.h"

namespace {

constexpr size_t kLongestLine = 511;
constexpr size_t kShortestLine = 2;    // with its line end
constexpr size_t kLargestFile = 4 << 20;    // bytes: many thousand items; a recording by that name is no playlist

// Taken as it stands: an absolute path, a marker, a stream's address.
bool IsAbsolute(std::string_view line)
{
    return line.front() == '/' || line.front() == ':' || line.substr(0, 7) == "http://";
}

}    // namespace

bool Playlist::IsPlaylist(const CascadeString& path)
{
    return CascadeFile(path).GetFilenameExtension().Compare(kExtension, false) == 0;
}

std::vector<CascadeString> Playlist::Parse(std::string_view text, const CascadeString& folder)
{
    std::vector<CascadeString> paths;
    TextLines lines(text, kLongestLine);
    for (std::string_view line; lines.Next(line);) {
        const std::string_view entry = TextLines::WithoutEnd(line);
        if (line.size() < kShortestLine || line.front() == '#' || entry.empty()) {
            continue;
        }
        paths.push_back(IsAbsolute(entry) ? CascadeString(entry) : folder + "/" + CascadeString(entry));
    }
    return paths;
}

std::string Playlist::Format(const std::vector<CascadeString>& paths)
{
    std::string text;
    for (const CascadeString& path : paths) {
        text += Absolute(path).Str() + "\r\n";
    }
    return text;
}

CascadeString Playlist::Absolute(const CascadeString& path)
{
    return path.IsEmpty() || IsAbsolute(path.Str()) ? path : CascadeFSObject(path).GetFullPath();
}

CascadeString Playlist::NameFor(const CascadeString& firstPath, const std::tm& localTime)
{
    const CascadeString folder = CascadeFSObject(firstPath).GetParentPath();
    if (folder.IsEmpty()) {
        return {};
    }
    constexpr int kYearsTo2000 = 100;    // the C library counts from 1900
    return CascadeString::Format("%s/%02d%02d%02d_%02d%02d.%s", folder.Text(), localTime.tm_year - kYearsTo2000, localTime.tm_mon + 1,
        localTime.tm_mday, localTime.tm_hour, localTime.tm_min, kExtension);
}

bool Playlist::Read(const char* path, std::vector<CascadeString>& paths)
{
    std::string text;
    if (!TextFile::Read(path, kLargestFile, text)) {
        return false;
    }
    paths = Parse(text, CascadeFSObject(path).GetParentPath());
    return true;
}

bool Playlist::Write(const char* path, const std::vector<CascadeString>& paths)
{
    AtomicFile file(path);
    return file.Open() && file.Write(Format(paths)) && file.Commit();
}
