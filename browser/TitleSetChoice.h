// Asks which of several long title sets of a DVD is to be played.
//
// Units:     logical pixels; sizes are bytes.
// Threads:   the user-interface thread.
// Ownership: the client is not owned and outlives the window. It is told of exactly one result for each Show, after
//            the window has left the screen; of none when the owner calls Vanish.
#pragma once

#include <vector>

#include "platform/CascadeFont.h"
#include "platform/CascadeWindow.h"
#include "sources/FileInfo.h"
#include "widgets/EListView.h"
#include "widgets/EPalette.h"

class TitleSetChoice : public CascadeWindow {
public:
    class Client {
    public:
        virtual ~Client() = default;
        virtual void OnTitleSet(const FileInfo* chosen) = 0;    // null: none. Valid during the call
    };

    TitleSetChoice();

    void SetGraphicsPath(const char* folder);    // of the theme, with a trailing "/"
    void Show(std::vector<FileInfo> titleSets, Client* client);    // takes the focus

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnMaterialize() override;
    void OnVanish() override;
    bool OnNavKey(unsigned long key, CascadeWindow*& next) override;
    bool OnKeyDown(unsigned long key) override;
    bool OnKeyUp(unsigned long key) override;

private:
    void Finish(int index);

    std::vector<FileInfo> m_TitleSets;
    Client* m_pClient = nullptr;
    std::vector<CascadeString> m_Lines;    // the question as it is laid out
    EPalette m_Palette;
    EListView m_List;
    CascadeFont m_TitleFont;
    CascadeFont m_TextFont;
};
