// A list with columns: rows of an icon, a name and a few quiet columns, in three sizes, with a cursor.
//
// The list is a window of its own that never takes the key focus: its owner has the keys and moves the cursor. It
// paints its panel over the whole of its rectangle.
//
// Units:     logical pixels; items and columns are numbered from 0, -1 stands for none.
// Errors:    an index outside is ignored and answers "", -1 or false.
// Threads:   the user-interface thread. Icons are read by a loader of the list's own; rows are painted without them
//            until they are there.
// Ownership: owns copies of all texts; what GetText, GetTag and GetThumbnail answer is valid until Clear, also when
//            items are added or changed meanwhile.
// Painting:  moving the cursor asks for it; adding and changing items does not: the owner calls Redraw once.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/CascadeFont.h"
#include "platform/CascadeTimer.h"
#include "platform/CascadeWindow.h"
#include "widgets/EPalette.h"
#include "widgets/ListItems.h"
#include "widgets/ListMotion.h"
#include "widgets/ListScroll.h"
#include "widgets/Marquee.h"

class EIconLoader;

class EListView : public CascadeWindow, public CascadeTimer {
public:
    enum ListMode { kSmall = 0, kLarge = 1, kExtraLarge = 2 };

    EListView();
    ~EListView() override;

    void SetGraphicsPath(const char* folder);    // of the theme, with a trailing "/": colours
    void SetListMode(int mode);    // other numbers than the three are ignored
    int GetListMode() const { return m_nMode; }

    // The first column is the name and takes the width that the others leave, whatever is given for it. Others stand
    // at the right end; one of width 0 is not shown, nor is one too narrow for a text.
    int AddColumn(const char* name, int width);
    int GetColumn(const char* name) const;
    void SetColumnWidth(int column, int width);

    void Clear(bool redraw);    // items and message; columns stay
    int AddItem(const char* name);
    void RemoveItem(int item);    // the cursor keeps its item
    int GetItemCount() const { return m_Items.Count(); }
    void SetText(int item, int column, const char* text) { m_Items.SetText(item, column, text); }
    const char* GetText(int item, int column) const { return m_Items.GetText(item, column); }
    void SetTag(int item, const char* tag) { m_Items.SetTag(item, tag); }
    const char* GetTag(int item) const { return m_Items.GetTag(item); }
    void SetThumbnail(int item, const char* path) { m_Items.SetThumbnail(item, path); }
    const char* GetThumbnail(int item) const { return m_Items.GetThumbnail(item); }
    void SetIcons(int item, const char* small, const char* large, const char* extraLarge) { m_Items.SetIcons(item, small, large, extraLarge); }
    void SetMark(int item, bool mark) { m_Items.SetMark(item, mark); }    // there is a place to resume at
    bool GetMark(int item) const { return m_Items.GetMark(item); }
    int FindTag(const char* tag) const { return m_Items.FindTag(tag); }    // first item; minds case
    int FindText(int column, const char* text) const { return m_Items.FindText(column, text); }

    // Stands in the middle of the room that the items leave; nothing when they fill the list.
    void SetMessage(const char* text);

    // The cursor; -1 while there are no items, and until it is set. Each answers whether it stands elsewhere now.
    int GetSelectedIndex() const { return m_Scroll.Selected(); }
    bool SetSelectedIndex(int index, bool ensureVisible);
    bool Move(int steps);    // stops at the ends
    bool Page(int pages);
    bool First() { return SetSelectedIndex(0, true); }
    bool Last() { return SetSelectedIndex(GetItemCount() - 1, true); }
    bool JumpTo(const char* prefix);    // first name that begins so; case of ASCII letters does not count
    // For the keys up (-1) and down (1): one row, and the longer the key is held the more. The owner tells of its release.
    bool Step(int direction);
    void StepReleased() { m_Motion.Release(); }

    int GetFirstVisible() const { return m_Scroll.Top(); }
    int GetVisibleCount() const;    // rows that fit, as far as there are items

    void SetFocused(bool focused);    // how the cursor looks: whether the keys move it at the moment
    void StartIconLoading();    // from now on icons of rows on screen are read
    void StopIconLoading();    // gives up what is being read; returns soon, whatever the disk does

    void OnPaint(CascadeBitmap& bitmap) override;
    void OnVanish() override;
    void OnTimer(unsigned long id) override;

private:
    struct Column {
        CascadeString name;
        int width = 0;
    };
    struct Trimmed {    // a name as it fits; names stay where they are, so the pointer tells them apart
        const char* name;
        int width;
        CascadeString shown;
        int wholeWidth;
    };
    CascadeRect RowsRect() const;    // where rows may stand, in screen coordinates
    void LayOut();
    bool MoveCursor(const std::function<bool()>& move);
    void RedrawScrolled(int top, int selected);    // what both were before
    void RedrawReplaced(int before, int now);
    static CascadeRect InkOf(const char* text, const CascadeFont& font, const CascadeRect& box, const CascadeRect& row);
    CascadeRect NameBox(int item, const CascadeRect& row) const;
    CascadeRect RowRect(int item) const;    // empty where it does not stand on the screen
    CascadeRect GrooveRect() const;    // of the scroll bar
    void StartMarquee(int item, int overflow);
    void StopMarquee();
    const Trimmed& TrimmedName(const char* name, int width);
    void PaintPanel(CascadeBitmap& bitmap);
    void PaintRow(CascadeBitmap& bitmap, int item, const CascadeRect& row);
    template <typename Visit>
    int VisitColumns(int item, const CascadeRect& row, Visit visit) const;    // right to left; answers where the name must end
    void PaintColumns(CascadeBitmap& bitmap, int item, const CascadeRect& row, bool focused) const;
    void PaintName(CascadeBitmap& bitmap, int item, const CascadeRect& box, bool selected, bool focused);
    const CascadeBitmap* IconOf(int item);    // null: none yet
    void PaintMark(CascadeBitmap& bitmap, const CascadeRect& icon, bool focused) const;
    void PaintMessage(CascadeBitmap& bitmap, const CascadeRect& room) const;
    void PaintScrollBar(CascadeBitmap& bitmap) const;

    EPalette m_Palette;
    std::vector<Column> m_Columns;
    ListItems m_Items;
    ListScroll m_Scroll;
    ListMotion m_Motion;
    Marquee m_Marquee;
    std::vector<Trimmed> m_Trimmed;
    CascadeString m_Message;
    int m_nMode = kSmall;
    bool m_bFocused = true;
    bool m_bIcons = false;    // rows may have icons read
    uint32_t m_nMarqueeTimer = 0;
    int m_nMarqueeItem = -1;    // whose name moves or has moved
    int m_nMarqueeShown = 0;    // pixels
    CascadeFont m_Font;
    CascadeFont m_QuietFont;
    CascadeBitmap m_Panel;    // as large as the window
    CascadeBitmap m_Focus;    // behind the row of the cursor
    unsigned m_nPanelResolution = 0;
    std::unique_ptr<EIconLoader> m_pIcons;
};
