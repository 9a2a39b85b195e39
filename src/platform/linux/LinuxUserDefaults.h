// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileManager.h"
#include "platform/UserDefaults.h"

#include <memory>
#include <string>

namespace platform {

/// Settings as one JSON object per suite, at "{home}/.config/zol-mini-apps/{suite}.json".
///
/// Each write takes a lock file, reads the file afresh, changes its one key and replaces the file, so that
/// two processes don't lose each other's keys; when the lock isn't had within a fifth of a second it writes
/// all the same. A file that isn't a JSON object counts as empty and is kept beside as
/// "{suite}.json.corrupt", later ones with a number behind; bytes in a text that aren't UTF-8 become U+FFFD.
/// Values of kinds that nobody asks for stay in the file. A file that can't be read, is too large, or finds
/// no room beside is left alone. Then, without a home, or on a disk that takes no writes, the changes hold in
/// memory, and the first write that succeeds adds them to what the file holds by then.
class LinuxUserDefaults final : public UserDefaults {
public:
    /// Whose the settings are. Of another program's a smaller file is read, and nothing is ever written or
    /// set aside.
    enum class Owner { thisProgram, another };

    /// `files` must outlive the settings.
    LinuxUserDefaults(FileManager& files, const std::string& suite, Owner owner = Owner::thisProgram);
    LinuxUserDefaults(const LinuxUserDefaults&) = delete;
    LinuxUserDefaults& operator=(const LinuxUserDefaults&) = delete;
    ~LinuxUserDefaults() override;

    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const override;
    [[nodiscard]] std::optional<double> number(std::string_view key) const override;
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override;
    [[nodiscard]] std::optional<std::vector<std::string>> textArray(std::string_view key) const override;
    [[nodiscard]] std::optional<std::string> bytes(std::string_view key) const override;

    void setBoolean(std::string_view key, bool value) override;
    void setNumber(std::string_view key, double value) override;
    void setText(std::string_view key, std::string_view value) override;
    void setTextArray(std::string_view key, const std::vector<std::string>& value) override;
    void setBytes(std::string_view key, std::string_view value) override;
    void remove(std::string_view key) override;

private:
    struct Store;
    std::unique_ptr<Store> store_;
};

/// Other programs' settings, beside this one's.
class LinuxUserDefaultsSuites final : public UserDefaultsSuites {
public:
    /// `files` must outlive this and what it opens.
    explicit LinuxUserDefaultsSuites(FileManager& files)
        : files_(files)
    {
    }

    [[nodiscard]] std::unique_ptr<const UserDefaults> open(const std::string& suite) const override;

private:
    FileManager& files_;
};

} // namespace platform
