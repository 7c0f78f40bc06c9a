// Decides, entry by entry, what a folder scan of the browser shows.
//
// Units:     sizes are bytes.
// Errors:    an entry whose status cannot be read counts as a file of any size. Nothing is printed.
// Threads:   one thread at a time per object. Match asks the disk once an entry, MatchKnown never.
// Ownership: owns its patterns.
// Use:       one selector serves one scan: folding sequences goes by the entry that was accepted last, so it
//            needs the scan's order, in which the members of a sequence follow each other.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/CascadeArrays.h"
#include "platform/CascadeFile.h"

class AllSelector : public CascadeFSObject::Selector {
public:
    // `filter`: with the bit for directories only directories pass and nothing else is looked at.
    // `minSize`: files of 4 GiB and more always pass.
    // `collapse`: only the first member of a numbered sequence passes.
    // `patterns`: shell patterns for the lower-cased name, split at ";"; null or empty: any name.
    AllSelector(SelectorTypeFilter filter, unsigned long minSize, bool collapse, const char* patterns);

    bool Match(CascadeFSObject& entry) override;
    // The same for an entry of which the scan knows kind and size; `folder` is the same text throughout a scan.
    // A null `size`: it cannot be read.
    bool MatchKnown(const CascadeString& folder, std::string_view name, bool isDirectory, const int64_t* size);
    bool PatternMatch(CascadeFSObject& entry) const;

    // The part of a file name without extension that all members of a numbered sequence share.
    static std::string_view SequenceBase(std::string_view stem);

    // A shell pattern of "*" and "?" as an extended regular expression, not anchored.
    static CascadeString PatternToRegex(const char* pattern);

private:
    bool MatchesPatterns(std::string_view name) const;
    bool IsFirstOfSequence(const CascadeString& folder, std::string_view name, std::string_view extension);

    SelectorTypeFilter m_Filter;
    // The sequence of the file that was accepted last; used only when folding.
    std::string m_LastBase;
    std::string m_LastExtension;
    std::string m_LastName;
    CascadeString m_LastFolder;
    std::unique_ptr<CascadeTokenArray> m_pPatterns;    // null: any name
    unsigned long m_nMinSize;
    bool m_bCollapse;
};
