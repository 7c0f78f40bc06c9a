#include "sources/DVDISOStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "sources/ByteReader.h"
#include "widgets/EUtils.h"

namespace {

// ECMA-119 6.2.1 and 8.4: the descriptors begin at sector 16; the primary one comes first.
constexpr unsigned long long kDescriptorPosition = 16 * 2048;
constexpr unsigned long long kSmallestImage = 34164;    // one byte more than the descriptor needs
constexpr size_t kStandardIdentifier = 1;
constexpr char kStandardName[] = "CD001";
constexpr size_t kLogicalBlockSize = 128;
constexpr size_t kRootRecord = 156;
constexpr size_t kRootRecordSize = 34;

constexpr char kTitleSetSeparator[] = "~";
constexpr char kMenuEnding[] = "_0.VOB";
constexpr char kInformationEnding[] = "_0.IFO";
constexpr int kLastTitleSet = 50;    // higher numbers are not looked for

bool IsMenu(const IsoDirectoryEntry& file)
{
    return file.name.Contains(kMenuEnding, false);
}

// 64-bit, as unsigned long need not be.
unsigned long Cut(unsigned long count, unsigned long long most)
{
    return static_cast<unsigned long>(std::min<unsigned long long>(count, most));
}

// No lseek where the stream stands already.
bool StandAt(CascadeStream& stream, unsigned long long position)
{
    return stream.GetPosition() == position || stream.SeekToPosition(position);
}

}    // namespace

DVDISOStream::IFOStream::IFOStream(const DirectoryEntry& entry, const char* imagePath)
    : m_nSize(entry.size)
    , m_nStart(entry.position)
{
    if (!m_Image.Open(CascadeFile(imagePath))) {
        m_nSize = 0;
    }
}

bool DVDISOStream::IFOStream::SeekToPosition(unsigned long long position)
{
    if (position > m_nSize) {
        return false;
    }
    m_nPosition = position;
    return true;
}

unsigned long DVDISOStream::IFOStream::ReadBytes(unsigned long count, void* buffer)
{
    if (!StandAt(m_Image, m_nStart + m_nPosition)) {
        return 0;
    }
    const unsigned long got = m_Image.ReadBytes(Cut(count, m_nSize - m_nPosition), buffer);
    m_nPosition += got;
    return got;
}

bool DVDISOStream::IsISOFile(const CascadeString& location)
{
    DVDISOStream stream;
    return stream.Open(location);
}

bool DVDISOStream::Open(const CascadeString& location)
{
    const CascadeTokenArray tokens(location, kTitleSetSeparator);
    if (tokens.GetSize() == 0) {
        Close();
        return false;
    }
    return Open(CascadeFile(tokens[0]), tokens.GetSize() > 1 ? tokens[1].Text() : nullptr);
}

bool DVDISOStream::Open(const CascadeFile& file, const char* titleSet)
{
    const CascadeString chosen(titleSet);    // the caller's text may be one of our own
    const CascadeString url = file.GetFullPath();
    Close();
    m_Url = url;
    AddMetadata("url", m_Url);
    m_VTSRoot = chosen;
    m_bOpen = m_Image.Open(CascadeFile(m_Url)) && ReadDescriptor();
    if (!m_bOpen) {
        m_Image.Close();
    }
    return m_bOpen;
}

bool DVDISOStream::ReadDescriptor()
{
    return m_Image.GetSize() >= kSmallestImage && m_Image.SeekToPosition(kDescriptorPosition)
        && m_Image.ReadBytes(m_Descriptor.size(), m_Descriptor.data()) == m_Descriptor.size()
        && std::memcmp(&m_Descriptor[kStandardIdentifier], kStandardName, std::strlen(kStandardName)) == 0;
}

void DVDISOStream::Close()
{
    m_VOBs.Empty();
    m_Runs.clear();
    m_pIFOStream.reset();
    m_pVideoFolder = nullptr;
    m_pRoot.reset();
    m_Image.Close();
    m_VTSRoot.Empty();
    m_bOpen = false;
    m_bParsed = false;
    m_bChosen = false;
    m_bInterrupted = false;
    m_nTotalSize = 0;
    m_nPosition = 0;
}

// Only the two folders that matter are read: the root and VIDEO_TS.
void DVDISOStream::ReadTree()
{
    if (!m_bOpen || m_bParsed) {
        return;
    }
    m_pIFOStream.reset();
    m_nTotalSize = 0;
    m_nPosition = 0;
    ByteReader descriptor(m_Descriptor);
    const IsoDirectory directory(m_Image, descriptor.LE16(kLogicalBlockSize));
    m_pRoot = directory.ReadRoot(std::span(m_Descriptor).subspan(kRootRecord, kRootRecordSize));
    m_bParsed = directory.ReadEntries(*m_pRoot);
    m_pVideoFolder = m_pRoot->GetDirectory("VIDEO_TS");
    if (m_pVideoFolder == nullptr) {
        m_pVideoFolder = m_pRoot.get();
    } else if (m_bParsed) {
        m_bParsed = directory.ReadEntries(*m_pVideoFolder);
    }
    m_bInterrupted = !m_bParsed;    // an image that is still being written: the next operation reads them again
}

CascadeString DVDISOStream::GetTitleSets(unsigned long long minSize, CascadeTemplateArray<FileInfo*>* out)
{
    ReadTree();
    CascadeString best;
    unsigned long long bestSize = 0;
    for (int number = 1; m_bParsed && number <= kLastTitleSet; ++number) {
        const CascadeString name = CascadeString::Format("VTS_%02i", number);
        CascadeTemplateArray<DirectoryEntry*> files;
        m_pVideoFolder->GetFiles(name + "_*.VOB", files);
        unsigned long long size = 0;
        for (const DirectoryEntry* file : files) {
            size += IsMenu(*file) ? 0 : file->size;
        }
        if (size > bestSize) {
            bestSize = size;
            best = name;
        }
        if (minSize != 0 && out != nullptr && size > minSize) {
            auto info = std::make_unique<FileInfo>();
            info->path = m_Url + kTitleSetSeparator + name;
            info->title = name + " (" + EUtils::GetFileSizeString(size) + ")";
            out->Append(info.release());
        }
    }
    return best;
}

void DVDISOStream::SetVTSRoot(const CascadeString& name)
{
    ReadTree();
    const CascadeString chosen = name;    // may be our own
    m_VTSRoot = chosen;
    m_VOBs.Empty();
    m_Runs.clear();
    m_pIFOStream.reset();
    m_nTotalSize = 0;
    m_bChosen = m_bParsed && !m_VTSRoot.IsEmpty();
    if (!m_bChosen) {
        return;    // the next operation that reads takes the largest
    }
    m_pVideoFolder->GetFiles(m_VTSRoot + "_*.vob", m_VOBs);
    for (const DirectoryEntry* file : m_VOBs) {
        if (!IsMenu(*file)) {
            AppendRun(*file);
        }
    }
    if (const DirectoryEntry* const information = m_pVideoFolder->GetFile(m_VTSRoot + kInformationEnding)) {
        m_pIFOStream = std::make_unique<IFOStream>(*information, m_Url);
    }
}

void DVDISOStream::AppendRun(const DirectoryEntry& entry)
{
    if (!m_Runs.empty() && m_Runs.back().position + m_Runs.back().size == entry.position) {
        m_Runs.back().size += entry.size;
    } else {
        m_Runs.push_back({m_nTotalSize, entry.position, entry.size});
    }
    m_nTotalSize += entry.size;
}

// The title set of the location, or the largest.
void DVDISOStream::Choose()
{
    m_bInterrupted = false;
    if (m_bChosen) {
        return;
    }
    const CascadeString name = m_VTSRoot.IsEmpty() ? GetTitleSets(0, nullptr) : m_VTSRoot;
    if (!name.IsEmpty()) {
        SetVTSRoot(name);
    }
    m_bChosen = m_bParsed;    // an image without title sets is not searched again
}

DVDISOStream::IFOStream* DVDISOStream::GetIFOStream()
{
    Choose();
    return m_pIFOStream.get();
}

unsigned long long DVDISOStream::GetSize()
{
    if (!m_bChosen) {
        Choose();
    }
    return m_nTotalSize;
}

bool DVDISOStream::SeekToPosition(unsigned long long position)
{
    Choose();
    if (position > m_nTotalSize) {
        return false;
    }
    m_nPosition = position;
    return true;
}

unsigned long DVDISOStream::ReadBytes(unsigned long count, void* buffer)
{
    Choose();
    // Another title set may have been chosen behind the end of which we stand.
    const unsigned long long position = std::min<unsigned long long>(m_nPosition, m_nTotalSize);
    const unsigned long wanted = Cut(count, m_nTotalSize - position);
    auto* const to = static_cast<unsigned char*>(buffer);
    unsigned long done = 0;
    for (const Run& run : m_Runs) {
        const unsigned long long offset = position + done - run.start;
        if (done == wanted || offset >= run.size) {
            continue;
        }
        const unsigned long asked = Cut(wanted - done, run.size - offset);
        const unsigned long got = ReadRun(run, offset, asked, to + done);
        if (m_bInterrupted) {
            return 0;    // the pieces before this one are asked for again with it
        }
        done += got;
        if (got < asked) {
            break;    // the image ends early: what lies behind must not move up
        }
    }
    m_nPosition = position + done;
    return done;
}

unsigned long DVDISOStream::ReadRun(const Run& run, unsigned long long offset, unsigned long count, unsigned char* to)
{
    if (!StandAt(m_Image, run.position + offset)) {
        return 0;
    }
    const unsigned long got = m_Image.ReadBytes(count, to);
    m_bInterrupted = m_Image.WasInterrupted();
    return got;
}
