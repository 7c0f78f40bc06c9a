// The detail pane, the timers and the work in the background.
#include <algorithm>
#include <ctime>

#include "browser/BrowserLayout.h"
#include "browser/EFileBrowser.h"
#include "platform/CascadeFile.h"
#include "platform/CascadeTime.h"
#include "widgets/EUtils.h"

namespace {

constexpr uint32_t kTickMs = 100;
constexpr uint32_t kPollMs = 10;
constexpr int kNoticeTicks = 40;
constexpr int kDetailRetryTicks = 5;
constexpr uint32_t kDetailPatienceMs = 2000;    // then a question to a dead server is left behind
constexpr int kMostHungDetails = 4;    // left behind in one folder, each with a thread

CascadeString DateText(int64_t seconds)
{
    const auto time = static_cast<time_t>(seconds);
    std::tm local = {};
    char text[64] = "";
    if (seconds == 0 || localtime_r(&time, &local) == nullptr || std::strftime(text, sizeof text, "%a %e %b %Y, %H:%M", &local) == 0) {
        return {};
    }
    return text;
}

// Title and year, and what else a viewer wants to know before choosing.
void AddInfo(BrowserDetail::Content& content, const EInfoFile& info)
{
    if (!info.genre.IsEmpty()) {
        content.facts.push_back(info.genre);
    }
    if (!info.rating.IsEmpty()) {
        content.facts.push_back(info.rating);
    }
    content.text = info.description;
}

CascadeString Titled(const EInfoFile& info)
{
    return info.year.IsEmpty() ? info.title : info.title + " (" + info.year + ")";
}

}    // namespace

// ---- time

void EFileBrowser::StartCountdown(int& countdown, int ticks)
{
    countdown = ticks;
    if (m_nTickTimer == 0) {
        m_nTickTimer = SetTimer(kTickMs);
    }
}

void EFileBrowser::WatchJobs()
{
    if (m_nPollTimer == 0) {
        m_nPollTimer = SetTimer(kPollMs);
    }
}

void EFileBrowser::OnTimer(unsigned long id)
{
    if (id == m_nPollTimer) {
        Poll();
    } else if (id == m_nTickTimer) {
        Tick();
    }
}

void EFileBrowser::Tick()
{
    if (m_nPatience > 0 && --m_nPatience == 0) {
        ShowWait(IsInServer() ? "Asking the server..." : m_Phase == Phase::kOpening ? "Reading the folder..." : "Reading the disc...");
    }
    if (m_nNoticeCountdown > 0 && --m_nNoticeCountdown == 0) {
        m_Notice.Empty();
        RedrawTexts();
    }
    if (m_nDetailCountdown > 0 && --m_nDetailCountdown == 0) {
        AskDetail();
    }
    if (m_nRescanCountdown > 0 && --m_nRescanCountdown == 0) {
        m_bScanPhase = true;
        RescanFolder();
    }
    const bool idle = m_nPatience == 0 && m_nNoticeCountdown == 0 && m_nDetailCountdown == 0 && m_nRescanCountdown == 0;
    if (idle && m_nTickTimer != 0) {
        KillTimer(m_nTickTimer);
        m_nTickTimer = 0;
    }
}

// Each result may start other work, open a dialog or close the browser, so one is taken at a time.
void EFileBrowser::Poll()
{
    if (auto config = m_ConfigJob.Take()) {
        OnConfigRead(*config);
    } else if (auto listing = m_ScanJob.Take()) {
        OnListing(*listing);
    } else if (auto lookup = m_LookupJob.Take()) {
        OnLookup(*lookup);
    } else if (auto info = m_InfoJob.Take()) {
        ShowInfo(*info);
    } else if (auto detail = m_DetailJob.Take()) {
        ShowDetail(*detail);
        if (m_bDetailWanted) {
            AskDetail();
        }
    }
    const bool running = m_ConfigJob.IsRunning() || m_ScanJob.IsRunning() || m_LookupJob.IsRunning() || m_InfoJob.IsRunning() || m_DetailJob.IsRunning();
    if (!running && m_nPollTimer != 0) {
        KillTimer(m_nPollTimer);
        m_nPollTimer = 0;
    }
}

void EFileBrowser::AbandonJobs()
{
    m_ConfigJob.Abandon();
    m_ScanJob.Abandon();
    m_DetailJob.Abandon();
    m_InfoJob.Abandon();
    m_LookupJob.Abandon();
    m_bDetailWanted = false;
    m_bScanPhase = false;
    m_nRescanCountdown = 0;
    m_nDetailCountdown = 0;
    m_nPatience = 0;
}

void EFileBrowser::ShowWait(const char* text)
{
    m_Wait.SetText(text);
    m_Wait.Show(BrowserLayout::kList);
}

void EFileBrowser::HideWait()
{
    m_Wait.Vanish();
}

void EFileBrowser::ShowNotice(const char* text)
{
    m_Notice = text;
    StartCountdown(m_nNoticeCountdown, kNoticeTicks);
    RedrawTexts();
}

// ---- the detail pane

// One question at a time: when the disk hangs, only few others hang with it.
void EFileBrowser::AskDetail()
{
    const ItemKind kind = KindOf(Selected());
    m_bDetailWanted = false;
    if (m_Phase != Phase::kListed) {
        return;
    }
    if (kind == ItemKind::kMedia || kind == ItemKind::kContainer || kind == ItemKind::kDevice) {
        ShowMediaDetail(Selected());
        return;
    }
    if (kind != ItemKind::kFile && kind != ItemKind::kFolder) {
        ShowParentDetail();
        return;
    }
    const uint32_t now = CascadeTime::GetUptimeMilliseconds();
    if (m_DetailJob.IsRunning() && (now - m_nDetailAskedAt < kDetailPatienceMs || m_nHungDetails >= kMostHungDetails)) {
        m_bDetailWanted = true;
        StartCountdown(m_nDetailCountdown, kDetailRetryTicks);
        return;
    }
    m_nHungDetails += m_DetailJob.IsRunning() ? 1 : 0;
    m_nDetailAskedAt = now;
    const CascadeString path = m_List.GetTag(Selected());
    const CascadeString picture = m_List.GetThumbnail(Selected());
    const bool folder = kind == ItemKind::kFolder;
    if (m_DetailJob.Start([path, folder, picture](const JobStop&) { return ItemDetail::Read(path, folder, picture); })) {
        WatchJobs();
    }
}

void EFileBrowser::ShowDetail(const ItemDetail& detail)
{
    const int item = Selected();
    const ItemFacts* const facts = Facts(item);
    if (facts == nullptr || detail.path != m_List.GetTag(item)) {
        return;    // the cursor has gone on
    }
    BrowserDetail::Content content;
    content.heading = detail.info.file.IsEmpty() || detail.info.IsOfParentFolder() ? CascadeString(m_List.GetText(item, 0)) : Titled(detail.info);
    if (detail.isDVD && detail.duration > 0) {
        content.facts.push_back("DVD, " + BrowserDetail::DurationText(detail.duration));
    } else if (facts->kind == ItemKind::kFolder || detail.isDVD) {
        content.facts.push_back(detail.isDVD ? "DVD" : "Folder");
    }
    // A folder's size would take a walk through all that is below.
    if (facts->kind != ItemKind::kFolder && !m_Set.hideSize) {
        const CascadeString size = EUtils::GetPlainSizeString(facts->totalSize);
        content.facts.push_back(facts->parts > 1 ? size + CascadeString::Format(" in %u files", facts->parts) : size);
    }
    if (const CascadeString date = DateText(detail.changedAt); !date.IsEmpty()) {
        content.facts.push_back(date);
    }
    if (m_List.GetMark(item)) {
        content.facts.push_back("Played before");
    }
    AddInfo(content, detail.info);
    content.isFolder = facts->kind == ItemKind::kFolder;
    content.picture = detail.picture;
    content.isWhole = facts->parts == 1 && !detail.isDVD;
    if (facts->kind == ItemKind::kFile || (content.picture.IsEmpty() && detail.isDVD)) {
        content.thumbnailOf = detail.path;
    }
    m_Detail.Show(content);
}

CascadeString EFileBrowser::GetAssociatedDescription(const EInfoFile& info, int height, const CascadeRect& box)
{
    CascadeString text = info.description;
    EUtils::TrimWrappedText(text, CascadeFont("system", BrowserLayout::kTextSize), {box.left, box.top, box.width, std::min(height, box.height)});
    return text;
}

// For "..", and until the cursor has come to rest: the folder itself.
void EFileBrowser::ShowParentDetail()
{
    if (IsInServer()) {
        ShowServerDetail();
        return;
    }
    BrowserDetail::Content content;
    content.heading = m_FolderInfo.title.IsEmpty() ? CascadeFSObject(m_curPath).GetName() : Titled(m_FolderInfo);
    AddInfo(content, m_FolderInfo);
    content.isFolder = true;
    m_Detail.Show(content);
}
