#include <algorithm>
#include <memory>

#include "browser/EFileBrowser.h"
#include "platform/CascadeFile.h"
#include "sources/FileList.h"
#include "widgets/EUtils.h"

namespace {

// DVD copies carry upper-case names as often as lower-case ones.
bool IsTitleSetFile(const CascadeFile& file)
{
    return file.GetFilenameExtension().Compare("VOB", false) == 0 && file.GetName().Compare("vts", false, false, 3) == 0;
}

std::unique_ptr<EFileBrowser::FileInfo> DescribeTitleSet(const CascadeString& first, const CascadeString& base, unsigned long long size)
{
    auto info = std::make_unique<EFileBrowser::FileInfo>();
    info->path = first;
    info->title = base + " (" + EUtils::GetFileSizeString(size) + ")";
    info->size = size;
    return info;
}

}    // namespace

CascadeString EFileBrowser::GetDVDFeatureVTS(const char* path, unsigned long long minSize, CascadeTemplateArray<FileInfo*>* list)
{
    CascadeString folder(path);
    if (folder.Right(1) != "/") {
        folder += '/';
    }
    const CascadeString videoFolder = folder + "VIDEO_TS/";
    if (CascadeFSObject::Exists(videoFolder)) {
        folder = videoFolder;
    }

    CascadeString result;
    unsigned long long best = 0;
    const CascadeDirScanner scanner(folder);
    for (size_t i = 0; i < scanner.GetNumEntries();) {
        const CascadeFile file(folder + scanner.GetEntryName(i));
        if (!IsTitleSetFile(file)) {
            ++i;
            continue;
        }
        FileList sequence;
        sequence.Create(file.GetPath(), nullptr);
        const CascadeString first = sequence.GetPath() + "/" + sequence.GetBase() + "_1." + file.GetFilenameExtension();
        if (sequence.GetTotalSize() > best) {
            best = sequence.GetTotalSize();
            result = first;
        }
        if (minSize != 0 && list != nullptr && sequence.GetTotalSize() > minSize) {
            list->Append(DescribeTitleSet(first, sequence.GetBase(), sequence.GetTotalSize()).release());
        }
        // The files of one sequence stand next to each other, this one being the first of them.
        i += std::max<size_t>(sequence.GetEntries().size(), 1);
    }
    return result;
}
