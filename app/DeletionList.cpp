#include "app/DeletionList.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "platform/CascadeFile.h"
#include "playback/FileSettings.h"
#include "sources/FileList.h"

namespace {

constexpr std::string_view kSideFileSignature = "#Nuvid File.";

bool IsOfServer(const CascadeString& path)
{
    return path.Compare("http://", false, false, 7) == 0 || path.Compare("upnp:", false, false, 5) == 0;
}

// Somebody else's file that happens to have the side file's name, which the engine never overwrites either.
bool IsForeign(const CascadeString& sideFile)
{
    const std::optional<std::string> text = ReadSettingsText(sideFile);
    return text && !text->starts_with(kSideFileSignature);
}

}    // namespace

DeletionList DeletionList::Gather(const CascadeString& path)
{
    DeletionList list;
    if (path.IsEmpty() || IsOfServer(path) || CascadeFSObject(path).IsDirectory()) {
        return list;
    }
    const CascadeString name = CascadeFile(path).GetName();
    FileList members;
    members.Create(path, name);    // empty when the item itself has vanished: no other file takes its place
    list.files.push_back({path, name});
    for (size_t i = 1; i < members.GetEntries().size(); ++i) {
        const CascadeString& member = members.GetEntries()[i].name;
        list.files.push_back({members.GetPath() + "/" + member, member});
    }
    list.size = members.GetTotalSize();
    const CascadeString sideFile = members.GetBase() + ".nuvid";
    if (!IsForeign(members.GetPath() + "/" + sideFile)) {
        list.files.push_back({members.GetPath() + "/" + sideFile, sideFile});
    }
    return list;
}

bool DeletionList::Remove(const CascadeString& path)
{
    struct stat status { };
    const bool gone = stat(path, &status) == 0 && S_ISREG(status.st_mode) && unlink(path) == 0;
    std::printf(gone ? "Deleted %s\n" : "Failed to delete %s\n", path.Text());
    return gone;
}
