// SPDX-License-Identifier: Apache-2.0
//
// Writes what the instrument writes, with its own parts and without a desktop: writer WHAT. Prints what the
// parts say came of it. The home is $HOME's.

#include "history/OstrelHistory.h"
#include "janitor/JanitorReceipts.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxFileManager.h"
#include "platform/linux/LinuxRunningInstances.h"
#include "platform/linux/LinuxUserDefaults.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace {

/// Opens a minute behind the last one.
void writeHistory(platform::FileManager& files)
{
    const std::string path = ostrel::OstrelHistory::defaultPath(files.homeDirectory());
    auto history = ostrel::OstrelHistory::load(files, path, platform::LinuxClock().now());
    history.record(1, 2, 3, 0.5, platform::LinuxClock().now());
    history.save(files, path);
    std::printf("%zu\n", history.points.size());
}

/// Two choices, one after the other: the second write takes along what the first couldn't keep.
void writeSettings(platform::FileManager& files)
{
    platform::LinuxUserDefaults defaults(files, "dev.quent.ostrel");
    defaults.setText("first", "1");
    defaults.setBytes("ostrel.hintPolicy", "{\"second\":2}");
    std::printf("%s %s\n", defaults.text("first").value_or("").c_str(),
        defaults.bytes("ostrel.hintPolicy").value_or("").c_str());
}

void writeReceipt(platform::FileManager& files)
{
    const platform::LinuxClock clock;
    const ostrel::JanitorReceipts receipts(files, clock);
    std::printf("%s\n", receipts.writeReceipt({ { "kind", "stop" }, { "pid", 17 } }).c_str());
}

/// Registers, and looks who else is there.
void registerInstance(const std::string& folder)
{
    platform::LinuxRunningInstances instances(folder);
    const auto own = instances.current();
    std::printf("%d %zu\n", own.pid, instances.others().size());
}

} // namespace

int main(int count, char** words)
{
    const std::string_view what = count > 1 ? words[1] : "";
    platform::LinuxFileManager files;
    if (what == "history")
        writeHistory(files);
    else if (what == "settings")
        writeSettings(files);
    else if (what == "receipt")
        writeReceipt(files);
    else if (what == "instance")
        registerInstance(files.homeDirectory() + "/run/ostrel");
    else
        return 2;
    return 0;
}
