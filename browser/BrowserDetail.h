// The browser's right side: picture, name, facts and description of the item that the cursor stands on.
//
// Units:     logical pixels.
// Errors:    what has no picture of its own shows the default one.
// Threads:   the user-interface thread; pictures are decoded and made elsewhere.
// Ownership: owns its picture widget, which comes and goes with it.
#pragma once

#include <vector>

#include "platform/CascadeFont.h"
#include "platform/CascadeThumbnail.h"
#include "platform/CascadeWindow.h"
#include "widgets/EJpegWidget.h"
#include "widgets/EPalette.h"

class BrowserDetail : public CascadeWindow, private CascadeThumbnails::Client {
public:
    struct Content {
        CascadeString heading;
        std::vector<CascadeString> facts;    // a line each
        CascadeString text;
        CascadeString picture;    // JPEG; empty: none
        CascadeString thumbnailOf;    // the recording to ask of its length, and without a picture one of that; empty: none
        bool isWhole = true;    // not one of several files, whose length would be that of the first
        bool isFolder = false;
    };

    BrowserDetail();

    static CascadeString DurationText(int seconds);

    void SetGraphicsPath(const char* folder);    // of the theme, with a trailing "/"
    void SetDefaultThumbnail(const char* path) { m_DefaultPath = path; }    // of recordings
    void SetFolderPicture(const char* path) { m_FolderPath = path; }
    void Show(const Content& content);

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnVanish() override;

private:
    void OnThumbnail(const char* path, const char* pictureFile, int seconds) override;
    void ShowPicture();
    void PaintPicture(CascadeBitmap& bitmap) const;
    int PaintLines(CascadeBitmap& bitmap, int top, const std::vector<CascadeString>& lines, const CascadeFont& font, CascadeColor color) const;
    std::vector<CascadeString> Facts() const;
    void PaintDescription(CascadeBitmap& bitmap, int top) const;

    EPalette m_Palette;
    Content m_Content;
    CascadeString m_DefaultPath;
    CascadeString m_FolderPath;
    CascadeBitmap m_Default;
    CascadeBitmap m_Folder;
    CascadeBitmap m_Thumbnail;    // empty: not there yet, or none
    int m_nSeconds = 0;    // of the recording; 0: not known
    EJpegWidget m_Picture;
    CascadeFont m_HeadingFont;
    CascadeFont m_TextFont;
};
