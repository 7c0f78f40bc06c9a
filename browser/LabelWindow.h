// One line of text that changes often, in a window of its own so that nothing around it is painted again.
//
// Units:     logical pixels.
// Threads:   the user-interface thread.
#pragma once

#include "platform/CascadeFont.h"
#include "platform/CascadeWindow.h"

class LabelWindow : public CascadeWindow {
public:
    void SetFont(const CascadeFont& font) { m_Font = font; }
    void SetColor(CascadeColor color) { m_Color = color; }
    void SetText(const CascadeString& text)
    {
        if (!(m_Text == text)) {
            m_Text = text;
            Redraw();
        }
    }
    const CascadeString& GetText() const { return m_Text; }

    // At the right end, in the middle of the height.
    void OnPaint(CascadeBitmap& bitmap) override
    {
        const CascadeDims extent = m_Font.GetTextExtent(m_Text);
        bitmap.Fill(0);
        bitmap.TextOut({GetRect().Right() - extent.width, GetRect().top + (GetRect().height - extent.height) / 2}, m_Text, m_Font, m_Color);
    }

private:
    CascadeString m_Text;
    CascadeFont m_Font;
    CascadeColor m_Color = 0xFFFFFFFF;
};
