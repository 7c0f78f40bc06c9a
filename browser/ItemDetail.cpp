#include "browser/ItemDetail.h"

#include <sys/stat.h>

#include "platform/CascadeFile.h"

namespace {

constexpr const char* kFolderPictures[] = {"/folder.jpg", "/Folder.jpg", "/folder.thm"};

bool IsFile(const CascadeString& path)
{
    struct stat status = {};
    return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

}    // namespace

ItemDetail ItemDetail::Read(const CascadeString& path, bool isFolder, const CascadeString& picture)
{
    ItemDetail detail;
    detail.path = path;
    struct stat status = {};
    if (stat(path, &status) == 0) {
        detail.changedAt = status.st_mtime;
    }
    detail.info.ParseFile(path);
    detail.picture = picture;
    if (isFolder) {
        detail.isDVD = CascadeFSObject(path + "/VIDEO_TS").IsDirectory() || IsFile(path + "/VIDEO_TS.IFO");
        for (const char* name : kFolderPictures) {
            if (detail.picture.IsEmpty() && IsFile(path + name)) {
                detail.picture = path + name;
            }
        }
    }
    return detail;
}
