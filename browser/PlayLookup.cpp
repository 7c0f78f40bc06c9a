#include "browser/PlayLookup.h"

#include <memory>

#include "browser/EFileBrowser.h"
#include "browser/FolderConfig.h"
#include "sources/DVDISOStream.h"

namespace {

using List = CascadeTemplateArray<FileInfo*>;

std::vector<FileInfo> TakeRecords(const List& list)
{
    std::vector<FileInfo> records;
    for (FileInfo* const record : list) {
        const std::unique_ptr<FileInfo> owned(record);
        records.push_back(*owned);
    }
    return records;
}

}    // namespace

PlayLookup PlayLookup::OfFolder(const CascadeString& folder, uint32_t threshold)
{
    PlayLookup lookup;
    lookup.item = folder;
    List list;
    lookup.mainTitle = EFileBrowser::GetDVDFeatureVTS(folder, threshold, &list);
    lookup.titleSets = TakeRecords(list);
    if (!lookup.mainTitle.IsEmpty()) {
        lookup.password = FolderConfig::Read(folder + "/").password;
    }
    return lookup;
}

PlayLookup PlayLookup::OfFile(const CascadeString& file, uint32_t threshold)
{
    PlayLookup lookup;
    lookup.item = file;
    DVDISOStream image;
    if (threshold != 0 && image.Open(file)) {
        List list;
        image.GetTitleSets(threshold, &list);
        lookup.titleSets = TakeRecords(list);
    }
    return lookup;
}
