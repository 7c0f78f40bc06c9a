#include "app/BrowsePlace.h"

#include "browser/BackgroundJob.h"
#include "platform/CascadeFile.h"

namespace {

constexpr std::chrono::milliseconds kPatience {100};    // three folders at most are asked about

bool IsOfMediaServer(const CascadeString& location)
{
    return location.Compare("upnp:", false, false, 5) == 0;
}

CascadeString StartFor(const CascadeString& location, const CascadeString& root)
{
    if (IsOfMediaServer(location)) {
        return location;
    }
    const CascadeString parent = CascadeFSObject(location).GetParentPath();
    return parent.IsEmpty() ? root : parent;
}

}    // namespace

EFileBrowser::FilterType BrowsePlace::FilterOfMode(int browserMode)
{
    switch (browserMode) {
    case 1:
        return EFileBrowser::kFilterSequence;
    case 2:
        return EFileBrowser::kFilterSize;
    case 3:
        return EFileBrowser::kFilterAll;
    default:
        return EFileBrowser::kFilterSequenceSize;
    }
}

BrowsePlace BrowsePlace::Find(const StartOptions& options, const EFileBrowser::FileInfo& lastChosen, const FolderTest& isFolder)
{
    BrowsePlace place;
    place.filter = FilterOfMode(options.browserMode);
    place.root = options.browseRoot;
    place.start = lastChosen.IsEmpty() ? options.browseFolder : StartFor(lastChosen.location, options.browseRoot);
    if (!isFolder(place.root)) {
        place.root = "/";
        place.message = "Invalid root directory!";
    }
    if (!IsOfMediaServer(place.start) && !isFolder(place.start)) {
        place.start = place.root;
        if (lastChosen.path.Compare("http://", false, false, 7) != 0) {
            place.message = "Invalid path directory!";
        }
    }
    if (!lastChosen.IsEmpty()) {
        place.cursor = isFolder(lastChosen.location) ? lastChosen.location : lastChosen.path;
    }
    return place;
}

bool BrowsePlace::MayBeFolder(const CascadeString& path)
{
    BackgroundJob<bool> job;
    if (!job.Start([path](const JobStop&) { return CascadeFSObject(path).IsDirectory(); }) || !job.Wait(kPatience)) {
        return true;
    }
    return job.Take().value_or(true);
}
