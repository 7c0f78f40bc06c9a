// Shows one picture, fitted into its rectangle. Decoding runs on a loader, so that moving through a list never waits
// for a picture; until it is there the widget shows "Loading...".
//
// The widget is a window of its own: it has no parent, its owner shows and places it. It never takes the key focus.
//
// Units:     logical pixels; pixel buffers hold 4 bytes a pixel, rows from the top without padding.
// Errors:    a picture that cannot be had shows the default image; without one, nothing. GetJpegBitmap answers false
//            and prints when decoding fails.
// Threads:   the user-interface thread; IsValidJpegFile and GetJpegBitmap any. SetJpegFilePath returns at once: what is
//            being decoded for an older path is given up, and the newest path is the next to be loaded.
// Ownership: the default image is not owned, lives as long as it is set. The owner calls WaitUntilFinished before it
//            goes; the destructor does it too.
#pragma once

#include <atomic>
#include <memory>

#include "platform/CascadeJpegFile.h"
#include "platform/CascadeWindow.h"

class ELoader;

class EJpegWidget : public CascadeWindow {
public:
    EJpegWidget();
    ~EJpegWidget() override;

    // Whether there is such a file and, when asked for, its extension is "jpg" or "thm" in any case.
    static bool IsValidJpegFile(const char* path, bool checkExtension);

    // The picture at the largest size that fits into `largest` with its aspect ratio kept, enlarged too. The bytes of a
    // pixel are blue, green, red, 0xFF when `alphaFirst` is false, and 0xFF, green, red, blue when it is true.
    // `stop` becoming true makes it give up.
    static bool GetJpegBitmap(const char* path, const CascadeDims& largest, CascadeDims& used, std::unique_ptr<unsigned char[]>& pixels,
        bool alphaFirst, const std::atomic<bool>* stop = nullptr);
    static bool GetJpegBitmap(CascadeJpegFile& file, const CascadeDims& largest, CascadeDims& used, std::unique_ptr<unsigned char[]>& pixels,
        bool alphaFirst, const std::atomic<bool>* stop = nullptr);

    // Place the window before. The empty path has no picture. The path that is shown, or being loaded, at the same size is
    // not loaded again; one that failed is.
    void SetJpegFilePath(const CascadeString& path);
    const CascadeString& GetJpegFilePath() const { return m_Path; }
    void SetDefaultImage(const CascadeBitmap* image);    // null: none
    void WaitUntilFinished();    // gives up what the loader is decoding; short even when the disk hangs
    bool IsLoaded() const;    // the loader is done with the path, whatever came of it

    void OnPaint(CascadeBitmap& bitmap) override;

private:
    struct Picture;
    static void ThreadProc(Picture& picture, const std::atomic<bool>& stop);
    void MakeBitmap();
    void PaintLoading(CascadeBitmap& bitmap) const;
    bool HasPicture() const;

    CascadeString m_Path;
    const CascadeBitmap* m_pDefaultImage = nullptr;
    std::shared_ptr<Picture> m_pPicture;    // shared with the loader; null: no path was set
    CascadeBitmap m_Bitmap;
    bool m_bBitmapMade = false;    // as far as it could be
    std::unique_ptr<ELoader> m_pLoader;
};
