// A folder of its own for a test, gone with everything in it when the object goes.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <stdlib.h>

#include <gtest/gtest.h>

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "nuvid-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            ADD_FAILURE() << "no temporary folder";
            abort();
        }
        m_Path = name;
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_Path, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_Path; }
    std::string operator/(const std::string& name) const { return m_Path + "/" + name; }

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(*this / name, std::ios::binary | std::ios::trunc) << bytes;
        return *this / name;
    }
    void WriteEach(const std::vector<std::string>& names, const std::string& bytes = "x") const
    {
        for (const std::string& name : names) {
            Write(name, bytes);
        }
    }
    void Append(const std::string& name, const std::string& bytes) const { std::ofstream(*this / name, std::ios::binary | std::ios::app) << bytes; }
    std::string Read(const std::string& name) const
    {
        std::ifstream file(*this / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::set<std::string> Names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_Path)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

private:
    std::string m_Path;
};
