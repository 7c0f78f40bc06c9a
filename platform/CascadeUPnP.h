// The UPnP control point of the platform: asks a media server for the children of one of its containers.
// A class that wants answers derives from it.
//
// Units:     sizes are bytes; indexes and counts are children of the container.
// Errors:    every request is answered by OnAVBrowseResult with `done` true, also one that fails, that is
//            given up after too long a silence, or that is cancelled; the objects that came until then are
//            in the array. Only the destruction of the object, or a new request, takes that away.
// Threads:   the user-interface thread, also for the answers; nothing here waits. An answer never comes
//            out of InitiateAVBrowse itself.
// Ownership: the array given to InitiateAVBrowse is the caller's and outlives the request. Destroying the
//            object cancels what is outstanding, and no call comes afterwards.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/CascadeArrays.h"
#include "platform/CascadeString.h"

class CascadeUPnP {
public:
    enum TransactionResult : int {
        kTransactionOK = 0,
        kTransactionNoDevice = 1,    // no server of that UUID answers on any network
        kTransactionTimedOut = 2,
        kTransactionConnectionLost = 3,
        kTransactionRefused = 4,    // the server answered with an error of its own
        kTransactionBadAnswer = 5,    // what it sent cannot be read, or is too large
        kTransactionTooMany = 6,    // the container holds more than is listed
        kTransactionCancelled = 7,
        kTransactionUnavailable = 8,    // this system has no control point
    };
    static const char* TransactionResultToString(TransactionResult result);

    // One place where an item's content can be had (ContentDirectory:1, DIDL-Lite `res`).
    struct AVResource {
        CascadeString protocolInfo;    // "http-get:*:video/mpeg:..."
        CascadeString url;    // empty when the server gave one outside its own network
        CascadeString duration;    // "H:MM:SS.F" as the server writes it; empty: not stated
        unsigned long long size = 0;    // 0: not stated
    };
    struct AVObject {
        bool isItem = false;    // false: a container
        CascadeString id;
        CascadeString parentId;
        CascadeString title;
        CascadeString upnpClass;    // "object.item.videoItem"
        CascadeTemplateArray<AVResource> resources;    // in the server's order
    };

    // The objects of an answer in the server's order.
    class AVObjectArray {
    public:
        size_t GetSize() const { return m_Objects.size(); }
        void Empty() { m_Objects.clear(); }
        void Append(std::unique_ptr<AVObject> object) { m_Objects.push_back(std::move(object)); }
        // The caller deletes it. Its place stays, so that the other indexes hold; null the second time.
        AVObject* TakeOwnership(size_t index) { return index < m_Objects.size() ? m_Objects[index].release() : nullptr; }

    private:
        std::vector<std::unique_ptr<AVObject>> m_Objects;
    };

    CascadeUPnP() = default;
    virtual ~CascadeUPnP();
    CascadeUPnP(const CascadeUPnP&) = delete;
    CascadeUPnP& operator=(const CascadeUPnP&) = delete;

    // Asks for the children of `objectId` from `startIndex` on, `requestedCount` of them or, with 0, all;
    // answers the number of the transaction, never 0. A device that is not known yet is looked for. One
    // request at a time: an earlier one that is outstanding is dropped without an answer.
    unsigned long InitiateAVBrowse(const CascadeString& deviceUUID, const CascadeString& objectId, const CascadeString& filter, const CascadeString& sortCriteria, unsigned long startIndex,
                                   unsigned long requestedCount, AVObjectArray& result);
    // Ends the outstanding request; its answer follows at once as an event of its own, with what has come.
    void CancelAVBrowse();
    bool IsBrowsing() const { return m_nTransaction != 0; }

    // `objects` is the array given to the request. With `done` false more will follow: the array holds what
    // has come so far. `matchCount` is how many children the server says there are, or 0.
    virtual void OnAVBrowseResult(unsigned long transaction, TransactionResult result, unsigned long matchCount, AVObjectArray& objects, bool done) = 0;

private:
    friend class CascadeUPnPRequests;    // the platform's side
    unsigned long m_nTransaction = 0;    // outstanding; 0: none
    AVObjectArray* m_pResult = nullptr;    // of the outstanding request
};
