// Small DVD images and information files built in memory, with every byte where the test can reach it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TestBytes.h"

inline void PutBE(std::string& bytes, size_t at, uint64_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i) {
        bytes.at(at + i) = static_cast<char>(value >> (8 * (width - 1 - i)));
    }
}

inline void PutLE(std::string& bytes, size_t at, uint64_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i) {
        bytes.at(at + i) = static_cast<char>(value >> (8 * i));
    }
}

// An ISO 9660 image with a root and at most one folder in it (ECMA-119). Sectors: 16 the volume descriptor,
// 18 the root, 19 the folder, the files from 20 on in the order in which they were added.
class ImageBuilder {
public:
    static constexpr size_t kSector = 2048;
    static constexpr size_t kRoot = 18 * kSector;
    static constexpr size_t kFolder = 19 * kSector;
    static constexpr size_t kFirstFile = 20 * kSector;

    // `folder` empty: the files stand in the root.
    explicit ImageBuilder(std::string folder = "VIDEO_TS")
        : m_Folder(std::move(folder))
    {
    }

    ImageBuilder& Add(const std::string& name, std::string bytes)
    {
        m_Files.emplace_back(name, std::move(bytes));
        return *this;
    }
    // Sectors that belong to no file, before the next one.
    ImageBuilder& Gap() { return Add("", std::string(kSector, '\x55')); }

    std::string Build() const
    {
        std::string image(kFirstFile, '\0');
        const size_t descriptor = 16 * kSector;
        image[descriptor] = 1;
        image.replace(descriptor + 1, 5, "CD001");
        PutLE(image, descriptor + 128, kSector, 2);
        image.replace(descriptor + 156, 34, Record(std::string(1, '\0'), 18, kSector, true));

        std::string entries = OwnRecords(18);
        std::string fileEntries;
        for (const auto& [name, bytes] : m_Files) {
            if (!name.empty()) {
                fileEntries += Record(name, image.size() / kSector, bytes.size(), false);
            }
            image += bytes;
            image.resize((image.size() + kSector - 1) / kSector * kSector);
        }
        if (m_Folder.empty()) {
            entries += fileEntries;
        } else {
            entries += Record(m_Folder, 19, kSector, true);
            fileEntries = OwnRecords(19) + fileEntries;
            image.replace(kFolder, fileEntries.size(), fileEntries);
        }
        image.replace(kRoot, entries.size(), entries);
        return image;
    }

    // 9.1, with both halves of the both-endian fields.
    static std::string Record(const std::string& name, size_t sector, size_t size, bool directory)
    {
        std::string record(33 + name.size() + (name.size() % 2 == 0 ? 1 : 0), '\0');
        record[0] = static_cast<char>(record.size());
        PutLE(record, 2, sector, 4);
        PutBE(record, 6, sector, 4);
        PutLE(record, 10, size, 4);
        PutBE(record, 14, size, 4);
        record[25] = directory ? 2 : 0;
        record[32] = static_cast<char>(name.size());
        record.replace(33, name.size(), name);
        return record;
    }

private:
    static std::string OwnRecords(size_t sector) { return Record(std::string(1, '\0'), sector, kSector, true) + Record("\1", 18, kSector, true); }

    std::string m_Folder;
    std::vector<std::pair<std::string, std::string>> m_Files;
};

// An information file of a title set: sector 0 the management table, 1 the program chains, then the cell addresses.
class InformationFileBuilder {
public:
    struct Cell {
        unsigned vob = 1;
        unsigned cell = 1;
        uint32_t first = 0;
        uint32_t last = 0;
    };
    struct Chain {
        std::vector<std::pair<unsigned, unsigned>> cells;    // VOB, cell
        std::vector<int> audio;    // stream number of each, below 0: not there
        uint32_t time = 0;    // 0xHHMMSS
    };

    std::vector<Cell> cells;
    std::vector<Chain> chains;
    std::vector<std::string> audio;    // records of 8 bytes
    std::string video = std::string("\x4C\x00", 2);
    uint32_t titleSetLast = 0;
    uint32_t informationLast = 0;
    uint32_t titleFirst = 0;

    static std::string Audio(unsigned coding, const char* language)
    {
        std::string record(8, '\0');
        record[0] = static_cast<char>(coding << 5);
        record[1] = 1;
        record.replace(2, 2, language);
        return record;
    }

    std::string Build() const
    {
        std::string file(2 * 2048, '\0');
        file.replace(0, 12, "DVDVIDEO-VTS");
        PutBE(file, 12, titleSetLast, 4);
        PutBE(file, 28, informationLast, 4);
        PutBE(file, 196, titleFirst, 4);
        PutBE(file, 204, 1, 4);
        file.replace(512, 2, video);
        PutBE(file, 514, audio.size(), 2);
        for (size_t i = 0; i < audio.size(); ++i) {
            file.replace(516 + 8 * i, 8, audio[i]);
        }
        const std::string chainTable = ChainTable();
        file.resize(2048 + (chainTable.size() + 2047) / 2048 * 2048);
        file.replace(2048, chainTable.size(), chainTable);
        PutBE(file, 224, file.size() / 2048, 4);
        return file + AddressTable();
    }

private:
    std::string AddressTable() const
    {
        std::string table(8 + 12 * cells.size(), '\0');
        PutBE(table, 4, table.size() - 1, 4);
        for (size_t i = 0; i < cells.size(); ++i) {
            PutBE(table, 8 + 12 * i, cells[i].vob, 2);
            PutBE(table, 10 + 12 * i, cells[i].cell, 1);
            PutBE(table, 12 + 12 * i, cells[i].first, 4);
            PutBE(table, 16 + 12 * i, cells[i].last, 4);
        }
        return table;
    }
    std::string ChainTable() const
    {
        std::string table(8 + 8 * chains.size(), '\0');
        PutBE(table, 0, chains.size(), 2);
        for (size_t i = 0; i < chains.size(); ++i) {
            PutBE(table, 12 + 8 * i, table.size(), 4);
            const Chain& chain = chains[i];
            std::string bytes(236 + 4 * chain.cells.size(), '\0');
            PutBE(bytes, 3, chain.cells.size(), 1);
            PutBE(bytes, 4, chain.time, 3);
            for (size_t k = 0; k < chain.audio.size(); ++k) {
                bytes[12 + 2 * k] = static_cast<char>(chain.audio[k] < 0 ? 0 : 0x80 | chain.audio[k]);
            }
            PutBE(bytes, 234, 236, 2);
            for (size_t j = 0; j < chain.cells.size(); ++j) {
                PutBE(bytes, 236 + 4 * j, chain.cells[j].first, 2);
                PutBE(bytes, 239 + 4 * j, chain.cells[j].second, 1);
            }
            table += bytes;
        }
        return table;
    }
};
