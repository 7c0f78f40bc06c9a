#include "sources/IsoDirectory.h"

#include <algorithm>
#include <string_view>

#include "sources/AllSelector.h"
#include "sources/ByteReader.h"
#include "widgets/EUtils.h"

namespace {

// ECMA-119 6.1.2: records lie in sectors of this size.
constexpr size_t kSectorSize = 2048;
// No folder is read further, whatever length it states: 99 title sets of 12 files each take 57 KiB.
constexpr size_t kMaxDirectoryBytes = 64 * 1024;

// ECMA-119 9.1, directory record.
constexpr size_t kExtentLocation = 2;
constexpr size_t kDataLength = 10;
constexpr size_t kFileFlags = 25;
constexpr uint8_t kFlagDirectory = 0x02;
constexpr size_t kIdentifier = IsoDirectory::kRecordHeaderSize;
// 7.6.2: the identifiers 0 and 1 stand for the folder itself and its parent.
constexpr uint8_t kFirstOfName = 2;

// The bytes of one folder, taken from the image as far as they are asked for.
class DirectoryBytes {
public:
    DirectoryBytes(CascadeStream& image, const IsoDirectoryEntry& directory)
        : m_Image(image)
        // A folder that states too little is still looked at for one sector.
        , m_nLimit(static_cast<size_t>(std::clamp<unsigned long long>(directory.size, kSectorSize, kMaxDirectoryBytes)))
        , m_bAtEnd(!image.SeekToPosition(directory.position))
    {
    }

    // Whether there are `count` bytes.
    bool Have(size_t count)
    {
        while (m_Bytes.size() < count && !m_bAtEnd) {
            const size_t before = m_Bytes.size();
            const size_t wanted = std::min(kSectorSize, m_nLimit - before);
            m_Bytes.resize(before + wanted);
            const unsigned long got = wanted == 0 ? 0 : m_Image.ReadBytes(wanted, m_Bytes.data() + before);
            m_Bytes.resize(before + got);
            m_bAtEnd = got < kSectorSize;
            m_bInterrupted = m_bInterrupted || (got < wanted && m_Image.WasInterrupted());
        }
        return m_Bytes.size() >= count;
    }
    std::span<const uint8_t> Part(size_t offset, size_t size) const { return std::span(m_Bytes).subspan(offset, size); }
    bool WasInterrupted() const { return m_bInterrupted; }

private:
    CascadeStream& m_Image;
    size_t m_nLimit;
    std::vector<uint8_t> m_Bytes;
    bool m_bAtEnd;
    bool m_bInterrupted = false;
};

IsoDirectoryEntry* Find(const std::vector<std::unique_ptr<IsoDirectoryEntry>>& entries, const char* wanted)
{
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry->name.Compare(wanted, false) == 0; });
    return found == entries.end() ? nullptr : found->get();
}

}    // namespace

IsoDirectoryEntry* IsoDirectoryEntry::GetDirectory(const char* wanted) const
{
    return Find(directories, wanted);
}

IsoDirectoryEntry* IsoDirectoryEntry::GetFile(const char* wanted) const
{
    return Find(files, wanted);
}

void IsoDirectoryEntry::GetFiles(const char* pattern, CascadeTemplateArray<IsoDirectoryEntry*>& out) const
{
    const CascadeString regex = AllSelector::PatternToRegex(pattern);
    // The characters before the first wildcard are looked for first: an expression compiled for every file
    // of a large folder and each of fifty title sets takes seconds.
    const std::string_view whole = pattern;
    const CascadeString head(whole.substr(0, whole.find_first_of("*?")));
    for (const auto& file : files) {
        if (file->name.Contains(head, false) && EUtils::RegexMatch(file->name, regex, false)) {
            out.Append(file.get());
        }
    }
}

std::unique_ptr<IsoDirectoryEntry> IsoDirectory::ReadRoot(std::span<const uint8_t> record) const
{
    return Parse(record);
}

bool IsoDirectory::ReadEntries(IsoDirectoryEntry& directory) const
{
    DirectoryBytes bytes(m_Image, directory);
    size_t at = 0;
    while (bytes.Have(at + 1)) {
        const size_t length = bytes.Part(at, 1)[0];
        // On purpose the first zero ends the folder, although records may go on in its next sector: only
        // the first sector of a folder counts.
        if (length == 0 || !bytes.Have(at + length)) {
            break;
        }
        const std::span<const uint8_t> record = bytes.Part(at, length);
        at += length;
        if (length <= kIdentifier || record[kIdentifier] < kFirstOfName) {
            continue;
        }
        std::unique_ptr<IsoDirectoryEntry> entry = Parse(record);
        (entry->isDirectory ? directory.directories : directory.files).push_back(std::move(entry));
    }
    return !bytes.WasInterrupted();
}

std::unique_ptr<IsoDirectoryEntry> IsoDirectory::Parse(std::span<const uint8_t> record) const
{
    ByteReader reader(record);
    auto entry = std::make_unique<IsoDirectoryEntry>();
    const std::string_view identifier = reader.Text(kIdentifier);
    entry->name = CascadeString(identifier.substr(0, identifier.find(';')));
    entry->position = static_cast<unsigned long long>(reader.LE32(kExtentLocation)) * m_nBlockSize;
    entry->size = reader.LE32(kDataLength);
    entry->isDirectory = (reader.U8(kFileFlags) & kFlagDirectory) != 0;
    return entry;
}
