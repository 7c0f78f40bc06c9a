#include "app/MDeleteDialog.h"

#include <algorithm>
#include <cstdio>

#include "app/MThemeSelect.h"
#include "platform/RemoteKeys.h"
#include "widgets/EUtils.h"

namespace {

constexpr int kWidth = 650;
constexpr int kHeight = 400;
constexpr int kMargin = 44;    // between the panel's edge and what stands in it
constexpr int kTop = 26;
constexpr int kRuleGap = 12;    // above and below a rule
constexpr int kBottom = 28;
constexpr int kTitleSize = 34;
constexpr int kTextSize = 24;
constexpr CascadeColor kTitleColor = 0xFFFFFFFF;
constexpr CascadeColor kTextColor = 0xE6EAF6FF;
constexpr CascadeColor kQuietColor = 0xB9C2D8FF;
constexpr CascadeColor kRuleColor = 0xFFFFFF30;

constexpr uint32_t kTickMs = 100;
constexpr std::chrono::milliseconds kPatience {200};    // a disk that is awake answers within it

void PaintRight(CascadeBitmap& bitmap, const CascadeRect& box, const char* text, const CascadeFont& font, CascadeColor color)
{
    const CascadeDims extent = font.GetTextExtent(text);
    bitmap.TextOut({box.Right() - extent.width, box.top + (box.height - extent.height) / 2}, text, font, color);
}

}    // namespace

MDeleteDialog::MDeleteDialog(IDeleteDialogCB* client, const FileInfo& entry)
    : m_pClient(client)
    , m_Path(entry.path)
    , m_TitleFont("system", kTitleSize)
    , m_Font("system", kTextSize)
{
    SetTitle("Delete");
}

void MDeleteDialog::Materialize(Plane plane)
{
    CascadeRect rect = {0, 0, kWidth, kHeight};
    EUtils::CenterRectInScreen(rect);
    SetRect(rect);
    CascadeWindow::Materialize(plane);
}

void MDeleteDialog::OnMaterialize()
{
    TakeFocus();
}

void MDeleteDialog::OnVanish()
{
    delete this;
}

// ---- the list, and its end

void MDeleteDialog::Gather()
{
    m_Stage = Stage::kGathering;
    if (m_Gathering.Start([path = m_Path](const JobStop&) { return DeletionList::Gather(path); })) {
        m_Gathering.Wait(kPatience);
    }
    TakeList();
    if (m_Stage == Stage::kGathering) {
        SetTimer(kTickMs);
    }
}

void MDeleteDialog::TakeList()
{
    if (std::optional<DeletionList> list = m_Gathering.Take()) {
        m_List = std::move(*list);
        m_Stage = Stage::kAsking;
    }
}

void MDeleteDialog::Delete()
{
    std::printf("About to delete\n");
    m_Stage = Stage::kDeleting;
    for (const DeletionList::File& file : m_List.files) {
        m_pClient->CloseFile(file.path);
    }
    const auto work = [files = std::move(m_List.files)](const JobStop& stop) {
        for (auto file = files.begin(); file != files.end() && !stop; ++file) {
            DeletionList::Remove(file->path);
        }
        return true;
    };
    m_List.files.clear();
    if (m_Deleting.Start(work) ? m_Deleting.Wait(kPatience) : work(JobStop(false))) {
        Finish(true);
        return;
    }
    SetTimer(kTickMs);
    Redraw();
}

void MDeleteDialog::OnTimer(unsigned long id)
{
    if (m_Stage == Stage::kGathering) {
        TakeList();
        if (m_Stage == Stage::kAsking) {
            KillTimer(static_cast<uint32_t>(id));
            Redraw();
        }
    } else if (m_Stage == Stage::kDeleting && m_Deleting.Take()) {
        Finish(true);
    }
}

void MDeleteDialog::Finish(bool deleted)
{
    IDeleteDialogCB* const client = m_pClient;
    Vanish();
    client->DeleteDialogDone(deleted);
}

// ---- keys

bool MDeleteDialog::OnKeyDown(unsigned long key)
{
    std::printf("Got %lx\n", key);
    if (key == Remote::kExit) {
        std::printf("Got exit\n");
        Finish(m_Stage == Stage::kDeleting);
    } else if (key == Remote::kSelect && m_Stage == Stage::kAsking) {
        Delete();
    }
    return true;
}

// Up and down walk through a list that is longer than the dialog.
bool MDeleteDialog::OnNavKey(unsigned long key, CascadeWindow*& /*next*/)
{
    std::printf("Got Nav %lx\n", key);
    const size_t count = m_List.files.size();
    const size_t last = count > m_nRows ? count - m_nRows : 0;
    const size_t first = key == Remote::kDown ? std::min(m_nFirst + 1, last) : key == Remote::kUp && m_nFirst > 0 ? m_nFirst - 1 : m_nFirst;
    if (first != m_nFirst) {
        m_nFirst = first;
        Redraw();
    }
    return true;
}

// ---- drawing

const char* MDeleteDialog::Notice() const
{
    switch (m_Stage) {
    case Stage::kAsking:
        return m_List.files.empty() ? "Only files of this box can be deleted." : nullptr;
    case Stage::kDeleting:
        return "Deleting...";
    default:
        return "Looking which files belong to it...";
    }
}

void MDeleteDialog::OnPaint(CascadeBitmap& bitmap)
{
    if (m_Stage == Stage::kNew) {
        Gather();
    }
    const CascadeRect& panel = GetRect();
    bitmap.Fill(0);
    bitmap.StretchBlit(panel, *g_ThemeSelect.GetThemeBitmap(MThemeSelect::kDialog));

    CascadeRect line = {panel.left + kMargin, panel.top + kTop, panel.width - 2 * kMargin, m_TitleFont.GetTextExtent("Aaj").height};
    bitmap.TextOut({line.left, line.top}, "About to delete:", m_TitleFont, kTitleColor);
    if (m_List.size > 0 && m_Stage == Stage::kAsking) {
        PaintRight(bitmap, line, EUtils::GetPlainSizeString(m_List.size), m_Font, kQuietColor);
    }
    bitmap.FillRect({line.left, line.Bottom() + kRuleGap, line.width, 2}, kRuleColor);

    const int height = m_Font.GetTextExtent("Aaj").height;
    const char* const hint = m_Stage == Stage::kAsking ? "Press [Select] to proceed. [Exit] to quit" : "[Exit] to quit";
    const CascadeRect bottom = {line.left, panel.Bottom() - kBottom - height, line.width, height};
    bitmap.FillRect({line.left, bottom.top - kRuleGap - 2, line.width, 2}, kRuleColor);
    bitmap.TextOut({line.left + (line.width - m_Font.GetTextExtent(hint).width) / 2, bottom.top}, hint, m_Font, kTextColor);

    line.top = line.Bottom() + 2 * kRuleGap + 2;
    line.height = height;
    m_nRows = static_cast<size_t>(std::max(1, (bottom.top - 2 * kRuleGap - line.top) / height));
    if (const char* const notice = Notice()) {
        bitmap.TextOut({line.left, line.top}, notice, m_Font, kQuietColor);
        return;
    }
    PaintList(bitmap, line, m_nRows);
}

// The last row tells how many more there are.
void MDeleteDialog::PaintList(CascadeBitmap& bitmap, CascadeRect line, size_t rows) const
{
    const size_t left = m_List.files.size() - m_nFirst;
    const size_t shown = left > rows ? rows - 1 : left;
    for (size_t i = 0; i < shown; ++i) {
        const CascadeString text = EUtils::TrimStringInMiddle("  " + m_List.files[m_nFirst + i].name, line.width, m_Font);
        bitmap.TextOut({line.left, line.top}, text, m_Font, kTextColor);
        line.top += line.height;
    }
    if (shown < left) {
        bitmap.TextOut({line.left, line.top}, CascadeString::Format("  ... and %zu more", left - shown), m_Font, kQuietColor);
    }
}
