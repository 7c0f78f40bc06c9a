// The playback engine: opens one playable item, feeds it to the decoder, and answers where it stands.
//
// Units:     positions and sizes are bytes, 64-bit; bit rates are bits per second; progress is percent.
// Errors:    every query and command answers 0, false or an empty text while no file is open. Failures
//            are told on standard output.
// Threads:   the user-interface thread. The feeder's callback runs on the decoder's thread and touches
//            only the feeder; this class changes the feeder's stream only while the feed is paused or closed.
// Ownership: owns its feeder, and through it the stream and the file sequence. The client is not owned.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/CascadeStream.h"
#include "platform/CascadeString.h"
#include "playback/BookmarkList.h"
#include "playback/IPlaybackClient.h"
#include "playback/SaveSchedule.h"
#include "playback/SideFileWriter.h"
#include "sources/DVDAudioStream.h"

class DVDISOStream;
class IFOCells;
class MHWDecoder;

// A new stream on a file, a title set of a DVD image ("film.iso", "film.iso~VTS_02") or an "http://"
// resource, owned by the caller; null when it cannot be opened.
CascadeStream* OpenStream(const char* path);
void CloseStream(CascadeStream* stream);    // null is ignored

class MDecoder {
public:
    MDecoder();
    ~MDecoder();
    MDecoder(const MDecoder&) = delete;
    MDecoder& operator=(const MDecoder&) = delete;

    void SetClient(IPlaybackClient* client) { m_pClient = client; }

    // Opening and closing.
    bool DoTheOpen(const char* path);
    bool DoTheClose();                    // always true
    bool ReOpen();                        // the decoder anew on the current stream at its position
    bool ChangeProgram();                 // scans again and applies the chosen program, video and audio
    bool ReSelectPIDs();
    void SetBufferSize(unsigned long size);
    void Tick();                          // several times a second: saves the side file while playing and on a pause

    bool IsFileOpen() const { return m_bFileOpen != 0; }
    bool IsStreaming() const { return m_bStreaming != 0; }
    int GetState() const { return m_bPlaying; }    // 1 playing, 2 paused, otherwise stopped
    bool IsVideoRunning() const;                   // streaming engaged and the end not reached
    bool IsStarving() const;                       // picture and sound have stopped for lack of data
    bool CurStreamIsHTTP() const;
    bool CurStreamIsISO() const;
    // The next three answer a text that lives until the same query is asked again.
    const char* GetCurFile() const;                // full path; null when none
    const char* GetCurFileName() const;            // name alone; null when none
    const char* GetOriginalFileName() const;       // as it was opened; null when none

    // Position and transport.
    unsigned long long GetCurFilePosition();
    unsigned long long GetCurFileSize();
    int GetCurFileProgress();
    int GetTotalFileProgress();
    int GetBitrate();
    bool IsBitrateMeasured();    // else GetBitrate answers the guess of the opening
    bool PauseStreaming();
    bool ResumeStreaming();
    void SkipFW(int seconds);      // leaves the feed paused; ReOpen follows
    void SkipBack(int seconds);
    uint32_t GetDuration() const { return m_nDuration; }    // seconds, 0 unknown
    void SetDuration(uint32_t seconds) { m_nDuration = seconds; }

    // Bookmarks and chapters.
    bool SetBookmark();
    bool ClearBookmark();
    int NextBookmark();            // 1-based number of the mark reached, or 0
    int PrevBookmark(bool skipOne);
    bool GoToBookmark(tagBookmark* mark);
    bool SkipToResumePoint();
    void ResumeAnswered() { m_SaveSchedule.SetAsking(false); }    // after IPlaybackClient::AskForResume answered true; a time-out is an answer
    int NextChapter();
    int PrevChapter(bool repeated);
    const BookmarkList& GetBookmarks() const { return m_Bookmarks; }
    const BookmarkList& GetChapters() const { return m_Chapters; }

    // Picture, program and audio.
    void NextZoomMode();
    int GetZoomMode() const { return m_nZoomMode; }
    int GetCurZoomStr(char* buffer, int size) const;
    bool SetVideoRes(unsigned index, int value);
    int GetVideoRes(unsigned index) const;
    bool SwitchToVideoRes(unsigned index);
    int GetFileVideoRes() const { return m_nFileVideoRes; }
    unsigned GetNumPrograms() const { return m_nNumPrograms; }
    unsigned GetProgram() const { return m_nProgram; }
    unsigned GetNumAudioStreams() const { return m_nNumAudioStreams; }
    unsigned GetAudioStream() const { return m_nAudioStream; }
    bool SetProgram(int index);
    bool SetVideoStream(int index);
    bool SetAudioStream(int index);
    CascadeString GetAudioStr(int index) const;

private:
    bool OpenAndSelect(const char* path);
    bool OpenDecoder();
    bool ScanAndSelect();
    bool SelectFrom(CascadeStream* scan, const char* path, bool ownStream);
    bool CallSelectPIDs();
    void ReadFileSettings();
    void WriteFileSettings();
    std::string FormatSettings(bool closing);
    void ReadIFO();
    void ReadImageIFO(DVDISOStream& image);
    void ReadFolderIFO();
    void AddFolderChapters(const IFOCells& cells, const CascadeString& current, const CascadeString& startName);
    void TakeTitle(const IFOCells& cells);
    void Skip(int distance);
    void Show(const char* text);
    tagBookmark GetMark() const;
    int VisitBookmark(int index);
    int VisitChapter(int index);
    bool GoToStartOf(const char* name);
    bool ResumeOnNewFeeder(const char* path, unsigned long long position);

    IPlaybackClient* m_pClient = nullptr;
    std::unique_ptr<MHWDecoder> m_pHWDecoder;
    int m_bPlaying = 0;
    int m_bStreaming = 0;
    int m_bFileOpen = 0;
    uint32_t m_nNumPrograms = 0;
    uint32_t m_nNumVideoStreams = 0;
    uint32_t m_nNumAudioStreams = 0;
    uint32_t m_nProgram = 0;
    uint32_t m_nVideoStream = 0;
    uint32_t m_nAudioStream = 0;
    bool m_bProgramStream = false;
    uint32_t m_nPCRPID = 0;
    uint32_t m_nVideoPID = 0;
    uint32_t m_nAudioPID = 0;
    bool m_bAC3Audio = false;
    uint32_t m_nSSID = 0;
    std::vector<audio_stream> m_DVDAudioStreams;
    CascadeString m_SettingsFile;
    tagBookmark m_Resume;                  // m_ResumeFile and m_nResumePos of the saved settings
    uint32_t m_nNumBuffers = 8;
    uint32_t m_nBufferSize = 192512;       // 1024 transport packets of 188 bytes
    uint32_t m_nOutputRes = 0;
    int m_bAskResume = 1;
    int m_nVideoRes[3] = {-1, -1, -1};
    int m_nFileVideoRes = 0;
    int m_nCurBookmark = 0;
    int m_nZoomMode = 0;
    unsigned long long m_nHTTPSize = 0;
    uint32_t m_nDuration = 0;
    SideFileWriter m_SideFile;
    SaveSchedule m_SaveSchedule;
    bool m_bOpening = false;               // inside DoTheOpen: nothing has been played yet
    BookmarkList m_Bookmarks;
    BookmarkList m_Chapters;
    mutable CascadeString m_CurFile;       // what the three queries answered last: the feed may walk on meanwhile
    mutable CascadeString m_CurFileName;
    mutable CascadeString m_OriginalFileName;
};
