// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorEngine.h"

#include "core/Text.h"
#include "janitor/JanitorText.h"

#include <array>
#include <cerrno>
#include <set>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace ostrel {

namespace {

constexpr platform::Seconds usualTimeout { 40 };
constexpr platform::Seconds cleanTimeout { 120 };
constexpr platform::Seconds processTimeout { 20 };
constexpr platform::Seconds listTimeout { 15 };
/// Signs of a command line that a receipt keeps.
constexpr std::size_t longestCommand = 300;

/// Of the same answer when none came: the empty one.
template <typename Read>
auto orEmpty(Read read)
{
    return [read](const std::optional<json::Value>& reply, const std::string&) {
        return reply ? read(*reply) : decltype(read(*reply))();
    };
}

std::vector<std::string> groupArguments(
    std::string_view command, const std::string& group, const std::vector<std::string>& selected, bool apply)
{
    std::vector<std::string> arguments { std::string(command), "--group=" + group };
    if (apply)
        arguments.emplace_back("--apply");
    if (!selected.empty())
        arguments.push_back("--select=" + joined(selected, ","));
    return arguments;
}

} // namespace

JanitorEngine::JanitorEngine(const Platform& platform, const ProtectionList& protection)
    : platform_(platform)
    , protection_(protection)
    , receipts_(platform.files, platform.clock)
    , runner_(std::make_shared<CollectorRunner>(platform.children))
{
}

std::string JanitorEngine::scriptPath() const
{
    if (auto path = platform_.bundle.pathForResource("collectors/ostrel_janitor.py"))
        return *path;
    const std::string home = platform_.files.homeDirectory();
    std::string installed = home + "/Library/Application Support/Ostrel/runtime/ostrel_janitor.py";
    if (platform_.files.fileExists(installed))
        return installed;
    return home + "/Documents/_code/_tools/ostrel/ostrel_janitor.py";
}

template <typename Answer, typename Read>
void JanitorEngine::call(std::vector<std::string> arguments, platform::Seconds timeout, Read read,
    std::function<void(Answer)> completion)
{
    arguments.insert(arguments.begin(), scriptPath());
    const auto deliver = life_.guard(
        [completion = std::move(completion)](Answer& answer) { completion(std::move(answer)); });
    platform_.globalQueue.async(platform::QueuePriority::userInitiated,
        [weak = std::weak_ptr(runner_), arguments = std::move(arguments), timeout, read, deliver,
            &mainQueue = platform_.mainQueue] {
            const auto runner = weak.lock();
            if (!runner)
                return;
            const CollectorResult result = runner->run({ .arguments = arguments, .timeout = timeout });
            const auto reply = json::parseObject(result.data);
            const std::string error
                = result.error.empty() ? "the janitor collector returned nothing" : result.error;
            auto answer = std::make_shared<Answer>(read(reply, error));
            mainQueue.post([deliver, answer] { deliver(*answer); });
        });
}

std::vector<std::string> JanitorEngine::withSettings(std::vector<std::string> arguments) const
{
    const auto extra = protection_.extra();
    const auto disabled = protection_.disabled();
    if (!extra.empty())
        arguments.push_back("--protected=" + joined(extra, ","));
    if (!disabled.empty())
        arguments.push_back("--unprotected=" + joined(disabled, ","));
    return arguments;
}

void JanitorEngine::findings(std::function<void(std::vector<JanitorFinding>, std::string)> completion)
{
    using Answer = std::pair<std::vector<JanitorFinding>, std::string>;
    const auto read = [](const std::optional<json::Value>& reply, const std::string& error) {
        return reply ? Answer(parseFindings(*reply), "") : Answer({}, error);
    };
    call<Answer>(withSettings({ "findings" }), usualTimeout, read,
        [completion = std::move(completion)](
            Answer answer) { completion(std::move(answer.first), std::move(answer.second)); });
}

void JanitorEngine::preview(const std::string& group, const std::vector<std::string>& selected,
    std::function<void(JanitorPreview)> completion)
{
    const auto read = [group](const std::optional<json::Value>& reply, const std::string& error) {
        return reply ? JanitorPreview::parse(*reply, group) : JanitorPreview::failed(group, error);
    };
    call<JanitorPreview>(
        groupArguments("preview", group, selected, false), usualTimeout, read, std::move(completion));
}

void JanitorEngine::clean(const std::string& group, const std::vector<std::string>& selected,
    std::function<void(JanitorCleanResult)> completion)
{
    const auto read
        = [group, receipts = receipts_](const std::optional<json::Value>& reply, const std::string& error) {
              return reply ? JanitorCleanResult::parse(*reply, group, receipts.receiptsPathToday())
                           : JanitorCleanResult::failed(error);
          };
    call<JanitorCleanResult>(
        groupArguments("clean", group, selected, true), cleanTimeout, read, std::move(completion));
}

void JanitorEngine::cacheCandidates(std::function<void(std::vector<CacheCandidate>)> completion)
{
    call<std::vector<CacheCandidate>>(
        { "caches" }, usualTimeout, orEmpty(parseCandidates), std::move(completion));
}

void JanitorEngine::killPreview(
    const std::vector<std::int64_t>& pids, std::function<void(JanitorKillPreview)> completion)
{
    call<JanitorKillPreview>(withSettings({ "kill-preview", fmt::format("--pids={}", fmt::join(pids, ",")) }),
        processTimeout, orEmpty(JanitorKillPreview::parse), std::move(completion));
}

void JanitorEngine::mcpPreview(std::string_view depth, std::function<void(JanitorKillPreview)> completion)
{
    call<JanitorKillPreview>(withSettings({ "mcp-preview", fmt::format("--depth={}", depth) }),
        processTimeout, orEmpty(JanitorKillPreview::parse), std::move(completion));
}

void JanitorEngine::groups(std::function<void(JanitorGroups)> completion)
{
    call<JanitorGroups>({ "groups" }, listTimeout, orEmpty(JanitorGroups::parse), std::move(completion));
}

void JanitorEngine::receiptLines(std::size_t limit, std::function<void(std::vector<std::string>)> completion)
{
    const auto read = [limit](const json::Value& reply) { return ostrel::receiptLines(reply, limit); };
    call<std::vector<std::string>>({ "receipts" }, listTimeout, orEmpty(read), std::move(completion));
}

std::vector<StopTarget> JanitorEngine::hold(const std::vector<JanitorProcess>& processes)
{
    std::vector<StopTarget> targets;
    std::set<std::int64_t> seen;
    for (const JanitorProcess& process : processes) {
        if (!seen.insert(process.pid).second)
            continue;
        targets.push_back({ process,
            targets.size() < mostHeld ? platform_.processSignals.hold(process.pid, process.start)
                                      : platform::Hold { nullptr, EMFILE } });
    }
    return targets;
}

std::string JanitorEngine::stop(const StopTarget& target)
{
    const JanitorProcess& process = target.process;
    const std::string name = oneLine(process.name);
    if (protection_.isProtected(process.name, process.cmd))
        return fmt::format("protected · {} was not stopped", name);
    const auto& held = target.hold.process;
    const int error = held ? held->terminate() : target.hold.error == 0 ? EINVAL : target.hold.error;
    // What may not be signalled at all was no attempt.
    if (held || error != EINVAL)
        receipts_.writeReceipt({ { "kind", "stop" }, { "pid", process.pid }, { "name", process.name },
            { "rss_mb", process.rssMB }, { "command", firstSigns(process.cmd, longestCommand) },
            { "signal", "SIGTERM" },
            { "result", error == 0 ? "sent" : fmt::format("failed errno {}", error) } });
    if (error != 0)
        return fmt::format("could not stop {} pid {} · errno {}", name, process.pid, error);
    return fmt::format("stopped {} pid {} · {} mb · receipt written", name, process.pid, process.rssMB);
}

} // namespace ostrel
