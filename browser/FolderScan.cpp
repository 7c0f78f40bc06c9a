#include "browser/FolderScan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "browser/LinkTargets.h"
#include "platform/CascadeFile.h"
#include "sources/AllSelector.h"

namespace {

constexpr const char* kHiddenFolders[] = {"System Volume Information", "RECYCLER"};
constexpr std::string_view kDevicePrefix = "upnp:";
constexpr size_t kLongestLink = 255;    // bytes of a link's target that are looked at
constexpr size_t kMostEntries = 1'000'000;    // no folder of recordings; bounds what a broken file system can cost

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

// One name of the folder, before it is known whether it is listed.
struct Found {
    std::string name;
    uint64_t key = 0;    // the name's first eight characters as they sort
    int64_t size = 0;
    bool isFolder = false;
    bool isLink = false;
    bool hasStatus = false;
};

unsigned char Fold(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

uint64_t SortKey(std::string_view name)
{
    uint64_t key = 0;
    for (size_t i = 0; i < 8; ++i) {
        key = key << 8 | (i < name.size() ? Fold(name[i]) : 0);
    }
    return key;
}

int CompareNames(std::string_view a, std::string_view b)
{
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        if (Fold(a[i]) != Fold(b[i])) {
            return Fold(a[i]) - Fold(b[i]);
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool SortsBefore(const Found& a, const Found& b)
{
    if (a.isFolder != b.isFolder) {
        return a.isFolder;
    }
    if (a.key != b.key) {
        return a.key < b.key;
    }
    const int order = CompareNames(a.name, b.name);
    // Names that differ in case alone stand in the same order every time.
    return order != 0 ? order < 0 : a.name < b.name;
}

// What the entry is, with one question to the disk where the folder itself does not say enough. Where links lead
// is asked later.
Found Describe(int folder, const dirent& entry)
{
    Found found;
    found.name = entry.d_name;
    found.key = SortKey(found.name);
    found.isFolder = entry.d_type == DT_DIR;
    found.isLink = entry.d_type == DT_LNK;
    struct stat status = {};
    if (!found.isFolder && !found.isLink && fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        found.isLink = S_ISLNK(status.st_mode);
        found.isFolder = S_ISDIR(status.st_mode);
        found.hasStatus = !found.isLink;
        found.size = status.st_size;
    }
    return found;
}

// A link whose target does not answer is listed as a folder: most likely it leads to a server that has gone.
void FollowLinks(const CascadeString& folder, std::vector<Found>& found, const JobStop& stop)
{
    std::vector<std::string> names;
    for (const Found& one : found) {
        if (one.isLink) {
            names.push_back(one.name);
        }
    }
    if (names.empty()) {
        return;
    }
    const std::vector<LinkTarget> targets = LinkTargets::Ask(folder.Str(), names, stop);
    size_t next = 0;
    for (Found& one : found) {
        if (one.isLink) {
            const LinkTarget& target = targets[next++];
            one.isFolder = target.state == LinkTarget::kFolder || target.state == LinkTarget::kSilent;
            one.hasStatus = target.state == LinkTarget::kFile;
            one.size = target.size;
        }
    }
}

// The UUID that a link to a media server carries; empty for any other entry.
CascadeString DeviceOf(int folder, const Found& found)
{
    // A target that exists is a file, whatever it is called.
    if (!found.isLink || found.hasStatus) {
        return {};
    }
    char target[kLongestLink + 1] = {};
    if (readlinkat(folder, found.name.c_str(), target, kLongestLink) <= 0) {
        return {};
    }
    const CascadeString text(target);
    return text.Compare(kDevicePrefix.data(), false, false, kDevicePrefix.size()) == 0 ? text.From(kDevicePrefix.size()) : CascadeString();
}

std::string_view ExtensionOf(std::string_view name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

std::string_view StemOf(std::string_view name)
{
    return name.substr(0, std::min(name.rfind('.'), name.size()));
}

// Files that tell something about others, gathered from the folder's own listing.
class Companions {
public:
    void Note(std::string_view name)
    {
        const std::string_view extension = ExtensionOf(name);
        if (CompareNames(extension, "nuvid") == 0) {
            m_SideFiles.insert(StemOf(name));
        } else if (CompareNames(extension, "jpg") == 0) {
            m_Pictures[StemOf(name)] = name;
        } else if (CompareNames(extension, "thm") == 0) {
            m_Pictures.try_emplace(StemOf(name), name);
        }
    }
    std::string_view PictureOf(std::string_view stem) const
    {
        if (m_Pictures.empty()) {
            return {};
        }
        auto found = m_Pictures.find(stem);
        if (found == m_Pictures.end()) {
            found = m_Pictures.find(AllSelector::SequenceBase(stem));
        }
        return found == m_Pictures.end() ? std::string_view() : found->second;
    }
    // What a recording's pictures and descriptions are called says nothing of themselves.
    bool HasSideFile(std::string_view name) const
    {
        static constexpr std::string_view kNotPlayed[] = {"nuvid", "jpg", "thm", "nfo", "txt", "my"};
        const std::string_view extension = ExtensionOf(name);
        return !m_SideFiles.empty() && m_SideFiles.contains(AllSelector::SequenceBase(StemOf(name)))
            && std::none_of(std::begin(kNotPlayed), std::end(kNotPlayed), [extension](std::string_view one) { return CompareNames(extension, one) == 0; });
    }

private:
    std::unordered_set<std::string_view> m_SideFiles;    // by the name that a recording's files share
    std::unordered_map<std::string_view, std::string_view> m_Pictures;
};

std::unique_ptr<AllSelector> MakeFileSelector(const FolderScanRequest& request)
{
    struct Row {
        bool bySize;
        bool folds;
    };
    // By the number of the filter.
    static constexpr Row kRows[] = {{false, false}, {false, true}, {true, true}, {true, false}};
    if (request.filter < 0 || request.filter >= static_cast<int>(std::size(kRows))) {
        return nullptr;
    }
    const Row& row = kRows[request.filter];
    return std::make_unique<AllSelector>(CascadeFSObject::Selector::kFiles, row.bySize ? request.minSize : 0, row.folds, request.pattern);
}

bool FoldsFiles(int filter)
{
    return filter == 1 || filter == 2;
}

class Lister {
public:
    Lister(const FolderScanRequest& request, int folder, FolderListing& listing)
        : m_Request(request)
        , m_Listing(listing)
        , m_pFiles(MakeFileSelector(request))
        , m_bFolds(FoldsFiles(request.filter))
        , m_Folder(folder)
        , m_Path(request.folder.Left(request.folder.GetLength() - std::min<size_t>(request.folder.GetLength(), 1)))
    {
    }

    void Add(const Found& found, const Companions& companions)
    {
        if (found.isFolder) {
            AddFolder(found);
            return;
        }
        const CascadeString device = DeviceOf(m_Folder, found);
        if (!device.IsEmpty()) {
            FolderEntry entry;
            entry.name = found.name;
            entry.extra = device;
            entry.kind = FolderEntry::kDevice;
            m_Listing.entries.push_back(std::move(entry));
            m_Listing.holdsDevices = true;
            return;
        }
        if (!m_pFiles && m_Request.selectable == CascadeDirBrowser::kFoldersOnly) {
            return;
        }
        if (m_pFiles && !m_pFiles->MatchKnown(m_Path, found.name, false, found.hasStatus ? &found.size : nullptr)) {
            Reject(found);
            return;
        }
        AddFile(found, companions);
    }

private:
    void AddFolder(const Found& found)
    {
        if (std::any_of(std::begin(kHiddenFolders), std::end(kHiddenFolders), [&found](const char* name) { return found.name == name; })) {
            return;
        }
        FolderEntry entry;
        entry.name = found.name;
        entry.kind = FolderEntry::kFolder;
        m_Listing.entries.push_back(std::move(entry));
    }

    void AddFile(const Found& found, const Companions& companions)
    {
        const std::string_view stem = StemOf(found.name);
        FolderEntry entry;
        entry.name = found.name;
        entry.size = entry.totalSize = static_cast<uint64_t>(std::max<int64_t>(found.size, 0));
        entry.extra = companions.PictureOf(stem);
        entry.hasSideFile = companions.HasSideFile(found.name);
        m_Listing.entries.push_back(std::move(entry));
    }

    // A file that was folded into the one listed last is counted there.
    void Reject(const Found& found)
    {
        FolderEntry* const last = m_Listing.entries.empty() || m_Listing.entries.back().kind != FolderEntry::kFile ? nullptr : &m_Listing.entries.back();
        const bool folded = m_bFolds && last != nullptr && CompareNames(ExtensionOf(found.name), ExtensionOf(last->name.Str())) == 0
            && AllSelector::SequenceBase(StemOf(found.name)) == AllSelector::SequenceBase(StemOf(last->name.Str()));
        if (folded) {
            ++last->parts;
            last->totalSize += static_cast<uint64_t>(std::max<int64_t>(found.size, 0));
        } else {
            ++m_Listing.hiddenFiles;
        }
    }

    const FolderScanRequest& m_Request;
    FolderListing& m_Listing;
    std::unique_ptr<AllSelector> m_pFiles;
    bool m_bFolds;
    int m_Folder;
    CascadeString m_Path;
};

CascadeString NearestParent(const CascadeString& folder)
{
    CascadeString path = CascadeFSObject(folder).GetParentPath();
    while (!path.IsEmpty() && path != "/") {
        if (CascadeFSObject(path).IsDirectory()) {
            return path + "/";
        }
        path = CascadeFSObject(path).GetParentPath();
    }
    return "/";
}

}    // namespace

int CustomSort(const FolderEntry& a, const FolderEntry& b)
{
    const bool aFolder = a.kind == FolderEntry::kFolder;
    const bool bFolder = b.kind == FolderEntry::kFolder;
    if (aFolder != bFolder) {
        return aFolder ? -1 : 1;
    }
    return a.name.Compare(b.name, false);
}

FolderListing ReadFolder(const FolderScanRequest& request, const JobStop& stop)
{
    FolderListing listing;
    const int descriptor = open(request.folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const Folder folder(descriptor < 0 ? nullptr : fdopendir(descriptor));
    if (!folder) {
        listing.state = errno == ENOENT || errno == ENOTDIR || errno == ESTALE ? FolderListing::kGone : FolderListing::kUnreadable;
        if (descriptor >= 0) {
            close(descriptor);
        }
        if (listing.state == FolderListing::kGone) {
            listing.nearestParent = NearestParent(request.folder);
        }
        return listing;
    }
    std::vector<Found> found;
    while (!stop && found.size() < kMostEntries) {
        const dirent* const entry = readdir(folder.get());
        if (entry == nullptr) {
            break;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            found.push_back(Describe(descriptor, *entry));
        }
    }
    FollowLinks(request.folder, found, stop);
    std::sort(found.begin(), found.end(), SortsBefore);
    Companions companions;
    for (const Found& one : found) {
        if (!one.isFolder) {
            companions.Note(one.name);
        }
    }
    Lister lister(request, descriptor, listing);
    for (const Found& one : found) {
        if (stop) {
            break;
        }
        lister.Add(one, companions);
    }
    if (!stop) {
        listing.info.ParseFile(request.folder);
    }
    return listing;
}
