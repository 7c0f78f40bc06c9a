// Shows what an information file says, with the buttons "Play", "Delete" and "Cancel".
//
// Keys:      left and right move among the buttons, up and down and the chapter keys scroll a long description,
//            select presses, play presses "Play", exit, menu and info leave.
// Units:     logical pixels.
// Errors:    without an information file the title alone is shown.
// Threads:   the user-interface thread. SetFile blocks on the disk; Show with a file parsed elsewhere does not.
// Ownership: the client is not owned and outlives the window. It is told of at most one result, after the window has
//            left the screen; of none when the viewer cancelled.
#pragma once

#include <vector>

#include "browser/EInfoFile.h"
#include "platform/CascadeFont.h"
#include "platform/CascadeWindow.h"
#include "widgets/EJpegWidget.h"
#include "widgets/EPalette.h"

class EInfoWindow : public CascadeWindow {
public:
    class Client {
    public:
        virtual ~Client() = default;
        virtual void OnInfoPlay() = 0;
        virtual void OnInfoDelete() = 0;
    };

    EInfoWindow();

    void SetGraphicsPath(const char* folder);    // of the theme, with a trailing "/"
    void SetDeletionAllowed(bool allowed) { m_bDeletion = allowed; }    // else the button is not offered
    void SetPicture(const char* path) { m_PicturePath = path; }    // a JPEG that stands beside the text; empty: none

    void SetFile(const char* path);    // a recording or folder
    void SetInfo(const char* path, const EInfoFile& info);    // the same, already parsed
    void ShowDialog(Client* client);    // takes the focus

    const EInfoFile& GetInfo() const { return m_Info; }
    const CascadeString& GetHeader() const { return m_Header; }    // four lines at most; missing ones are blank lines above
    const CascadeString& GetResult() const { return m_Result; }    // the button that closed it; empty: none

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnVanish() override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long key) override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;

private:
    struct Button {
        const char* label;
        CascadeRect rect;
    };
    static void ButtonCallback(EInfoWindow& window, const char* label) { window.ProcessButtonPress(label); }
    void ProcessButtonPress(const char* label);
    void BuildHeader();
    void LayOut();
    void LayOutButtons();
    void Scroll(int lines);
    size_t VisibleLines() const;
    void LoadPictures();
    void PaintDescription(CascadeBitmap& bitmap) const;
    void PaintHeader(CascadeBitmap& bitmap) const;
    void PaintButtons(CascadeBitmap& bitmap) const;

    CascadeString m_Path;
    EInfoFile m_Info;
    CascadeString m_Header;
    CascadeString m_Result;
    Client* m_pClient = nullptr;
    bool m_bDeletion = true;
    CascadeString m_ThemeFolder;
    CascadeString m_PicturePath;
    CascadeString m_ShownTitle;
    std::vector<CascadeString> m_Lines;    // the description, with the actors, as it is laid out
    CascadeRect m_TextBox;
    size_t m_nFirstLine = 0;
    std::vector<Button> m_Buttons;
    size_t m_nFocus = 0;
    CascadeFont m_TitleFont;
    CascadeFont m_TextFont;
    CascadeFont m_ButtonFont;
    EPalette m_Palette;
    CascadeBitmap m_Panel;
    CascadeBitmap m_Normal;
    CascadeBitmap m_Highlight;
    EJpegWidget m_Picture;
};
