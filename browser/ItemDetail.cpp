#include "browser/ItemDetail.h"

#include <sys/stat.h>

#include "browser/EFileBrowser.h"
#include "platform/CascadeFile.h"
#include "sources/DVDISOStream.h"
#include "sources/IFOCells.h"

namespace {

constexpr const char* kFolderPictures[] = {"/folder.jpg", "/Folder.jpg", "/folder.thm"};

bool IsFile(const CascadeString& path)
{
    struct stat status = {};
    return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

// "VTS_01_1.VOB" has its information in "VTS_01_0.IFO" beside it.
int32_t DurationOfFolder(const CascadeString& folder)
{
    constexpr size_t kEnding = 5;    // "1.VOB"
    const CascadeString title = EFileBrowser::GetDVDFeatureVTS(folder, 0, nullptr);
    if (title.GetLength() <= kEnding) {
        return 0;
    }
    const CascadeString information = title.Left(title.GetLength() - kEnding) + "0.IFO";
    return IsFile(information) ? IFOCells(information).GetDuration() : 0;
}

void ReadImage(const CascadeString& path, ItemDetail& detail)
{
    DVDISOStream image;
    detail.isDVD = image.Open(path);
    DVDISOStream::IFOStream* const information = detail.isDVD ? image.GetIFOStream() : nullptr;
    if (information != nullptr) {
        detail.duration = IFOCells(*information).GetDuration();
    }
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
        detail.duration = detail.isDVD ? DurationOfFolder(path) : 0;
        for (const char* name : kFolderPictures) {
            if (detail.picture.IsEmpty() && IsFile(path + name)) {
                detail.picture = path + name;
            }
        }
    }
    if (!isFolder && IsFile(path)) {
        ReadImage(path, detail);
    }
    return detail;
}
