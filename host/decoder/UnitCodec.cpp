#include "host/decoder/UnitCodec.h"

#include <utility>

namespace host {

UnitCodec::UnitCodec(int64_t mostPixels, std::function<void()> onNoMemory)
    : m_nMostPixels(mostPixels)
    , m_OnNoMemory(std::move(onNoMemory))
{
}

void UnitCodec::Begin()
{
    if (m_pContext) {
        avcodec_flush_buffers(m_pContext.get());
    }
    m_bDrained = false;
    m_nChoice = 0;
}

UnitCodec::Sent UnitCodec::Send(const CodedUnit& unit)
{
    const Sent sent = MakeReady(unit);
    if (sent != Sent::kNot && avcodec_send_packet(m_pContext.get(), unit.packet.get()) == AVERROR(ENOMEM)) {
        m_OnNoMemory();
    }
    return sent;
}

bool UnitCodec::Drain()
{
    if (!m_pContext || m_bDrained) {
        return false;
    }
    avcodec_send_packet(m_pContext.get(), nullptr);
    m_bDrained = true;
    return true;
}

UnitCodec::Sent UnitCodec::MakeReady(const CodedUnit& unit)
{
    const bool changed = m_nChoice != 0 && unit.choice != m_nChoice;
    m_nChoice = unit.choice;
    if (!m_pContext || m_Kind != unit.codec) {
        return Open(unit.codec) ? Sent::kToOpened : Sent::kNot;
    }
    if (changed || m_bDrained) {
        avcodec_flush_buffers(m_pContext.get());
        m_bDrained = false;
    }
    return changed ? Sent::kToChanged : Sent::kAsBefore;
}

bool UnitCodec::Open(AVCodecID kind)
{
    m_pContext.reset();
    m_Kind = kind;
    m_bDrained = false;
    const AVCodec* const codec = avcodec_find_decoder(kind);
    if (codec == nullptr) {
        return false;
    }
    m_pContext.reset(avcodec_alloc_context3(codec));
    if (!m_pContext) {
        m_OnNoMemory();
        return false;
    }
    m_pContext->thread_count = 1;
    m_pContext->pkt_timebase = {1, 90000};
    if (m_nMostPixels != 0) {
        m_pContext->max_pixels = m_nMostPixels;
    }
    const int result = avcodec_open2(m_pContext.get(), codec, nullptr);
    if (result < 0) {
        m_pContext.reset();
        if (result == AVERROR(ENOMEM)) {
            m_OnNoMemory();
        }
        return false;
    }
    return true;
}

}    // namespace host
