// Chapters, playing time and audio streams of a DVD title, from the information file of its title set.
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/CascadeFile.h"
#include "playback/MDecoder.h"
#include "playback/MHWDecoder.h"
#include "sources/DVDISOStream.h"
#include "sources/FileList.h"
#include "sources/IFOCells.h"

namespace {

constexpr std::string_view kTitleSetPrefix = "VTS_";

unsigned long long Location(const cell_info& cell)
{
    return static_cast<unsigned long long>(cell.location);
}

}    // namespace

// Before the feed starts. The chapters found replace those of the side file; without an information file
// these stay.
void MDecoder::ReadIFO()
{
    if (m_bFileOpen == 0) {
        return;    // the resolution of the side file could not be taken up
    }
    if (auto* const image = dynamic_cast<DVDISOStream*>(m_pHWDecoder->GetStream())) {
        ReadImageIFO(*image);
    } else {
        ReadFolderIFO();
    }
    std::fflush(stdout);
}

void MDecoder::ReadImageIFO(DVDISOStream& image)
{
    DVDISOStream::IFOStream* const information = image.GetIFOStream();
    if (information == nullptr) {
        std::printf("IFO: No IFO found in DVD iso.\n");
        return;
    }
    const IFOCells cells(*information);
    TakeTitle(cells);
    // The stream is the title from its first byte, so a cell's location is a position in it.
    const CascadeString name = m_pHWDecoder->GetPlace().files.GetCurrentName();
    std::vector<tagBookmark> chapters;
    for (const cell_info& cell : cells.GetCells()) {
        chapters.push_back({name, cell.location});
        std::printf("Chapter added %s @ %llu\n", name.Text(), Location(cell));
    }
    m_Chapters.AddBookmarks(std::move(chapters));
}

// A copy of a DVD's folder, or any recording with an information file beside it.
void MDecoder::ReadFolderIFO()
{
    const SmartFileList files = m_pHWDecoder->GetPlace().files;
    const CascadeString& base = files.GetBase();
    const bool titleSet = base.Str().starts_with(kTitleSetPrefix);
    const CascadeString path = files.GetPath() + "/" + base + (titleSet ? "_0.IFO" : ".IFO");
    if (!CascadeFSObject::Exists(path)) {
        std::printf("IFO: %s not found\n", path.Text());
        return;
    }
    std::printf("Found %s. About to read it.\n", path.Text());
    std::fflush(stdout);
    const IFOCells cells(path);
    TakeTitle(cells);
    // A title's own files only: the menu in VTS_nn_0.VOB counts for no location.
    AddFolderChapters(cells, files.GetCurrent(), titleSet ? base + "_1.VOB" : CascadeString());
}

void MDecoder::AddFolderChapters(const IFOCells& cells, const CascadeString& current, const CascadeString& startName)
{
    FileList list;
    list.Create(current, startName);
    std::printf("fList size: %lld  IFO reported size: %lld\n", static_cast<long long>(list.GetTotalSize()), static_cast<long long>(cells.GetTitleSize()));
    std::vector<tagBookmark> chapters;
    for (const cell_info& cell : cells.GetCells()) {
        CascadeString name;
        unsigned long long offset = 0;
        if (!list.GetFileAt(Location(cell), &name, &offset)) {
            std::printf("Chapter NOT added. No file for absolute offset %llu\n", Location(cell));
            continue;
        }
        chapters.push_back({name, static_cast<long long>(offset)});
        std::printf("Chapter added %s @ %llu\n", name.Text(), offset);
    }
    m_Chapters.AddBookmarks(std::move(chapters));
}

void MDecoder::TakeTitle(const IFOCells& cells)
{
    std::printf("Found %d chapters.\n", static_cast<int>(cells.GetCells().size()));
    m_Chapters.Clear();
    m_nDuration = static_cast<uint32_t>(cells.GetDuration());
    m_DVDAudioStreams = cells.GetAudioStreams();
}
