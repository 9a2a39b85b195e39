// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxUserDefaults.h"

#include "core/Json.h"
#include "platform/linux/Base64.h"
#include "platform/linux/UniqueFd.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <thread>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

using ostrel::json::Value;

constexpr std::size_t longestFile = std::size_t { 4 } * 1024 * 1024;
/// Of another program: it is read while somebody waits.
constexpr std::size_t longestForeignFile = std::size_t { 256 } * 1024;
constexpr int mostCorruptCopies = 9;
/// Short, since one who writes many keys leaves the lock free only for moments.
constexpr std::chrono::milliseconds lockStep { 1 };
constexpr int lockSteps = 200;
constexpr const char* bytesTag = "$bytes";

/// What tells one state of a file from the next without reading it.
using FileStamp = std::tuple<dev_t, ino_t, off_t, time_t, long>;

FileStamp stampOf(const std::string& path)
{
    struct stat file { };
    if (::stat(path.c_str(), &file) != 0)
        return {};
    return { file.st_dev, file.st_ino, file.st_size, file.st_mtim.tv_sec, file.st_mtim.tv_nsec };
}

/// Holds the lock file while it lives, as far as it can be had.
class FileLock {
public:
    explicit FileLock(const std::string& path)
        : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600))
    {
        for (int step = 0; file_ && step < lockSteps; ++step) {
            if (::flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
                return;
            std::this_thread::sleep_for(lockStep);
        }
    }

private:
    UniqueFd file_;
};

/// The value as the file will give it back: bytes that aren't UTF-8 are replaced now, not at the next start.
Value asStored(Value value)
{
    auto stored = ostrel::json::parse(ostrel::json::dump(value));
    return stored ? std::move(*stored) : std::move(value);
}

} // namespace

struct LinuxUserDefaults::Store {
    FileManager& files;
    std::string path; ///< empty without a home
    bool foreign = false; ///< another program's: only read
    Value values = Value::object(); ///< what the file holds, with what is pending over it
    std::map<std::string, std::optional<Value>, std::less<>> pending; ///< changes that the file doesn't have
    std::optional<FileStamp> stamp; ///< of the file that was taken in; none when it has to be looked at again
    bool replaceable = true; ///< nothing is lost with the file that stands there

    /// Takes in the file when it has changed since the last look.
    void refresh()
    {
        if (path.empty())
            return;
        const FileStamp now = stampOf(path);
        if (stamp == now)
            return;
        values = Value::object();
        const auto text = now == FileStamp() ? std::string()
                                             : files.read(path, foreign ? longestForeignFile : longestFile);
        auto object = text ? ostrel::json::parseObject(*text) : std::nullopt;
        if (object)
            values = std::move(*object);
        if (foreign) {
            replaceable = false;
            stamp = now;
            return;
        }
        // What can't be read may hold all that the user ever chose.
        replaceable = text && (object || text->empty() || keepCorrupt(*text));
        stamp = replaceable ? std::optional(now) : std::nullopt;
        for (const auto& [key, value] : pending)
            apply(key, value);
    }

    /// Sets the unreadable file's bytes aside, once for each content. Whether they are safe there.
    bool keepCorrupt(const std::string& text)
    {
        for (int copy = 1; copy <= mostCorruptCopies; ++copy) {
            const std::string aside = path + ".corrupt" + (copy == 1 ? "" : std::to_string(copy));
            const auto there = files.read(aside, longestFile);
            if (there == text)
                return true;
            if (!there && stampOf(aside) == FileStamp())
                return files.replace(aside, text);
        }
        return false;
    }

    void apply(const std::string& key, const std::optional<Value>& value)
    {
        if (value)
            values[key] = *value;
        else
            values.erase(key);
    }

    /// Changes one key, in memory and in the file.
    void change(std::string_view key, std::optional<Value> value)
    {
        const bool folder = !foreign && !path.empty() && files.createDirectories(parentDirectory(path));
        std::optional<FileLock> lock;
        if (folder) {
            lock.emplace(path + ".lock");
            stamp.reset();
            refresh();
        }
        apply(std::string(key), value);
        if (folder && replaceable && files.replace(path, ostrel::json::dump(values) + "\n")) {
            pending.clear();
            stamp = stampOf(path);
        } else {
            pending.insert_or_assign(std::string(key), std::move(value));
        }
    }

    [[nodiscard]] const Value* find(std::string_view key)
    {
        refresh();
        return ostrel::json::member(values, key);
    }
};

LinuxUserDefaults::LinuxUserDefaults(FileManager& files, const std::string& suite, Owner owner)
    : store_(new Store { .files = files, .path = {}, .foreign = owner == Owner::another })
{
    const std::string home = files.homeDirectory();
    if (!home.empty())
        store_->path = home + "/.config/zol-mini-apps/" + suite + ".json";
}

LinuxUserDefaults::~LinuxUserDefaults() = default;

std::optional<bool> LinuxUserDefaults::boolean(std::string_view key) const
{
    const Value* value = store_->find(key);
    return value ? ostrel::json::asBoolean(*value) : std::nullopt;
}

std::optional<double> LinuxUserDefaults::number(std::string_view key) const
{
    const Value* value = store_->find(key);
    return value ? ostrel::json::asNumber(*value) : std::nullopt;
}

std::optional<std::string> LinuxUserDefaults::text(std::string_view key) const
{
    const Value* value = store_->find(key);
    return value ? ostrel::json::asText(*value) : std::nullopt;
}

std::optional<std::vector<std::string>> LinuxUserDefaults::textArray(std::string_view key) const
{
    const Value* value = store_->find(key);
    if (!value || !value->is_array())
        return std::nullopt;
    std::vector<std::string> texts;
    for (const Value& element : *value) {
        auto text = ostrel::json::asText(element);
        if (!text)
            return std::nullopt;
        texts.push_back(std::move(*text));
    }
    return texts;
}

std::optional<std::string> LinuxUserDefaults::bytes(std::string_view key) const
{
    const Value* value = store_->find(key);
    const auto encoded = value ? ostrel::json::text(*value, bytesTag) : std::nullopt;
    return encoded ? fromBase64(*encoded) : std::nullopt;
}

void LinuxUserDefaults::setBoolean(std::string_view key, bool value) { store_->change(key, Value(value)); }

void LinuxUserDefaults::setNumber(std::string_view key, double value)
{
    if (std::isfinite(value))
        store_->change(key, Value(value));
}

void LinuxUserDefaults::setText(std::string_view key, std::string_view value)
{
    store_->change(key, asStored(value));
}

void LinuxUserDefaults::setTextArray(std::string_view key, const std::vector<std::string>& value)
{
    store_->change(key, asStored(value));
}

void LinuxUserDefaults::setBytes(std::string_view key, std::string_view value)
{
    store_->change(key, Value { { bytesTag, toBase64(value) } });
}

void LinuxUserDefaults::remove(std::string_view key) { store_->change(key, std::nullopt); }

std::unique_ptr<const UserDefaults> LinuxUserDefaultsSuites::open(const std::string& suite) const
{
    if (files_.homeDirectory().empty())
        return nullptr;
    return std::make_unique<const LinuxUserDefaults>(files_, suite, LinuxUserDefaults::Owner::another);
}

} // namespace platform
