# SPDX-License-Identifier: Apache-2.0
"""What kind of program a process is, judged by its first arguments. All rules work on the bytes of the
command line, and all words stand in the tables below.

A rule looks at what is *run*: the program, or the script that a language runtime was given. A word in any
other argument says nothing, so an editor that holds notes on a server isn't one.

The groups that a process can be in, the first that fits:

- "mcp": an MCP server (`is_mcp_server`)
- "claude", "codex": an agent's command line program, at work or not
- "system": the operating system's own programs, by where they lie or by name, and whatever shows no command
  line
- "runtime": a language runtime or a package launcher
- "app": anything else
"""
from __future__ import annotations

AGENTS = (b"claude", b"codex")
AGENT_PACKAGES = {b"claude-code": b"claude", b"claude": b"claude", b"codex": b"codex"}
SCRIPT_ENDINGS = (b".js", b".mjs", b".cjs", b".ts", b".py", b".jar", b".asar")

NOT_A_SESSION = frozenset((
    b"mcp", b"mcp-server", b"app-server", b"exec-server", b"login", b"logout", b"auth", b"setup-token",
    b"config", b"completion", b"install", b"update", b"upgrade", b"doctor", b"help", b"--help", b"-h",
    b"--version", b"-v", b"-V", b"sandbox", b"debug", b"features", b"plugin", b"apply",
))
"""First arguments that make an agent's program do something else than be an agent: serve other programs, or
answer one question about itself."""

AGENT_OPTIONS_WITH_VALUE = {
    b"claude": frozenset((b"--model", b"--settings", b"--add-dir", b"--permission-mode")),
    b"codex": frozenset((
        b"-c", b"--config", b"-m", b"--model", b"-p", b"--profile", b"-C", b"--cd", b"-s", b"-a", b"--enable",
        b"--disable",
    )),
}
"""Options that may stand before an agent's own command, each with its value behind it."""

SCRIPT_RUNTIMES = frozenset((b"node", b"nodejs", b"bun", b"deno"))
CONTAINER_CLIENTS = frozenset((b"docker", b"podman", b"nerdctl"))
LAUNCHERS = CONTAINER_CLIENTS | frozenset((
    b"npm", b"npx", b"pnpm", b"yarn", b"bunx", b"uv", b"uvx", b"pipx",
))
"""They start the program that counts as a child of their own."""

RUNTIMES = SCRIPT_RUNTIMES | LAUNCHERS - CONTAINER_CLIENTS | frozenset((
    b"python", b"pypy", b"ruby", b"java", b"perl", b"php", b"dotnet", b"lua", b"luajit", b"beam.smp",
    b"julia", b"Rscript", b"tsx", b"ts-node",
))
INTERPRETERS = RUNTIMES - LAUNCHERS
OPTIONS_WITH_VALUE = frozenset((
    b"-r", b"--require", b"--import", b"--loader", b"--experimental-loader", b"-C", b"--conditions", b"-W",
    b"-X", b"-cp", b"-classpath", b"--class-path", b"--env-file",
))
INLINE_CODE = frozenset((b"-c", b"-e", b"--eval", b"-p", b"--print", b"-pe"))

CONTAINER_SHIMS = frozenset((b"containerd-shim", b"containerd-shim-runc-v2", b"conmon"))
"""The parents of what runs in containers."""

CONTAINER_OPTIONS_WITH_VALUE = frozenset((
    b"-e", b"--env", b"--env-file", b"-v", b"--volume", b"--mount", b"--name", b"-p", b"--publish", b"-w",
    b"--workdir", b"-u", b"--user", b"-h", b"--hostname", b"-l", b"--label", b"--network", b"--net",
    b"--platform", b"--pull", b"-m", b"--memory", b"--cpus", b"--entrypoint", b"--add-host", b"--device",
    b"--security-opt", b"--cap-add", b"--cap-drop", b"--tmpfs", b"--ulimit", b"--restart", b"--gpus",
    b"--runtime", b"--userns", b"--log-driver", b"--cidfile", b"--shm-size",
))

MCP_WORDS = frozenset((
    b"mcp", b"fastmcp", b"modelcontextprotocol", b"mcpserver", b"mcpservers", b"mcpo", b"mcpd", b"mcphub",
    b"mcpproxy", b"supergateway",
))
MCP_ENDING = b"mcp"
"""Words that end so name servers too, such as `xcodebuildmcp`."""

MCP_COMMANDS = frozenset((b"mcp-server", b"mcp-serve", b"start-mcp-server"))
MCP_VERBS = frozenset((b"", b"serve", b"server", b"start", b"run", b"stdio", b"gateway"))
GENERIC_NAMES = frozenset((
    b"index", b"main", b"server", b"cli", b"app", b"run", b"start", b"stdio", b"__main__", b"dist", b"build",
    b"src", b"bin", b"lib", b"out",
))
"""File and folder names that don't tell what a script is; the folder above them does."""

SYSTEM_FOLDERS = (
    b"/usr/lib/systemd/", b"/lib/systemd/", b"/usr/libexec/", b"/usr/sbin/", b"/sbin/", b"/usr/lib/polkit",
    b"/usr/lib/policykit-1/", b"/usr/lib/bluetooth/", b"/usr/lib/snapd/", b"/usr/lib/accountsservice/",
)
SYSTEM_NAMES = frozenset((
    b"systemd", b"(sd-pam)", b"init", b"dbus-daemon", b"dbus-broker", b"dbus-broker-launch", b"Xorg", b"X",
    b"Xwayland", b"pipewire", b"pipewire-pulse", b"wireplumber", b"pulseaudio", b"gnome-shell",
    b"gnome-session-binary", b"kwin_x11", b"kwin_wayland", b"plasmashell", b"xfwm4", b"xfce4-session",
    b"cinnamon", b"marco", b"mutter", b"sway", b"Hyprland", b"labwc", b"openbox", b"agetty", b"login",
    b"sshd", b"lightdm", b"sddm", b"gdm3", b"dockerd", b"containerd", b"tini", b"docker-init",
)) | CONTAINER_SHIMS

CHROMIUM_OPTION = b"--type="
CHROMIUM_TYPES = frozenset((
    b"renderer", b"gpu-process", b"utility", b"zygote", b"broker", b"ppapi", b"plugin",
))
APP_PATH = b"--app-path="
UNTOLD_BUNDLES = frozenset((b"exe", b"electron", b"electron-bin"))
"""Programs that don't tell whose helper this is: a link to the program itself, and the frame that others
build upon, which the versions' digits may follow."""

BROWSERS = frozenset((
    b"firefox", b"firefox-esr", b"firefox-bin", b"librewolf", b"waterfox", b"zen", b"zen-bin", b"chrome",
    b"google-chrome", b"google-chrome-stable", b"chromium", b"chromium-browser", b"brave", b"brave-browser",
    b"msedge", b"microsoft-edge", b"opera", b"vivaldi", b"vivaldi-bin", b"thorium", b"epiphany", b"falkon",
    b"WebKitWebProcess", b"WebKitNetworkProcess",
))

TOOLS = frozenset((
    b"cc1", b"cc1plus", b"clang", b"clang++", b"gcc", b"g++", b"c++", b"ld", b"ld.lld", b"lld", b"mold",
    b"rustc", b"cargo", b"go", b"compile", b"link", b"javac", b"tsc", b"esbuild", b"make", b"ninja", b"cmake",
    b"ctest", b"clang-tidy", b"ccache", b"git", b"rg", b"grep", b"find", b"tar", b"gzip", b"xz", b"zstd",
    b"rsync", b"ffmpeg", b"dpkg", b"apt", b"apt-get", b"dnf", b"pacman",
))
"""Programs that do one piece of work and end; nothing is open in them."""

WORD_BREAKS = bytes(byte if bytes((byte,)).isalnum() else 32 for byte in bytes(range(256)).lower())
"""Lower case for letters, a blank for what isn't a letter or digit."""


class Kind:
    """What one process was recognised as. All names are bytes.

    `program` is its program's name, `script` that of the script it runs as a runtime, b"" for none. `agent`
    is whose program it is, `scripted` tells the agent's script from its own program, and `session` whether it
    is at work as an agent. `helper` is a Chromium's helper. `client` is a container's client that stands for
    an MCP server.
    """

    __slots__ = (
        "program", "script", "agent", "scripted", "session", "mcp", "client", "helper", "browser", "group",
    )

    def __init__(self, cmdline: bytes) -> None:
        argv = cmdline.split(b"\0") if cmdline else []
        self.program = program(argv)
        interpreter = runtime_name(self.program) in INTERPRETERS
        place = script_place(argv) if interpreter else 0
        self.script = stem(argv[place]) if place else b""
        self.agent, first = agent(argv, self.program, place)
        self.scripted = first > 1
        self.helper = not interpreter and is_chromium_helper(cmdline)
        self.mcp = mentions_mcp(cmdline) and is_mcp_server(argv, self.program, place)
        self.client = self.mcp and self.program in CONTAINER_CLIENTS
        self.session = (
            self.agent != b"" and not self.mcp and not self.helper and is_session(argv, self.agent, first)
        )
        self.browser = self.program in BROWSERS
        self.group = group(argv, self.program, self.agent, self.mcp)

    def name(self) -> bytes:
        """What a person would call it: the script rather than its runtime."""
        return self.script or self.program


def program(argv: list[bytes]) -> bytes:
    """The name of the program, without its folder. Of a title that a program wrote over its arguments, such
    as "npm exec tool", "sshd: user" or "/opt/browser --type=renderer", the part that names the program."""
    if not argv:
        return b""
    first = argv[0]
    if b" " in first:
        if first[1:3] == b":\\":
            return first.rsplit(b"\\", 1)[-1]
        if first[:1] != b"/":
            return first.split(b" ", 1)[0].rstrip(b":")
        first = first.split(b" -", 1)[0]
    return first.rsplit(b"/", 1)[-1].lstrip(b"-")  # a login shell has "-" before its name


def runtime_name(name: bytes) -> bytes:
    """A program's name without its version: python for python3.11."""
    return name if name in RUNTIMES else name.rstrip(b"0123456789.")


def script_place(argv: list[bytes]) -> int:
    """Where in the arguments of a runtime the script, module or archive stands that it runs; 0 when it runs
    none."""
    place = 1
    while place < len(argv):
        argument = argv[place]
        if argument in INLINE_CODE:
            return 0
        if argument in (b"-m", b"-jar"):
            return place + 1 if place + 1 < len(argv) else 0
        if argument in OPTIONS_WITH_VALUE:
            place += 1
        elif argument[:1] != b"-" and not (argument == b"run" and place == 1):
            return place
        place += 1
    return 0


def without_ending(name: bytes) -> bytes:
    """A script's file name without what tells its language."""
    for ending in SCRIPT_ENDINGS:
        if name.endswith(ending):
            return name[:-len(ending)]
    return name


def stem(script: bytes) -> bytes:
    """What to call a script: its file name without the ending, or, where that is as good as none, the folder
    that it lies in."""
    parts = [part for part in script.split(b"/") if part]
    while len(parts) > 1 and without_ending(parts[-1]) in GENERIC_NAMES:
        parts.pop()
    return without_ending(parts[-1]) if parts else b""


def agent(argv: list[bytes], name: bytes, script: int) -> tuple[bytes, int]:
    """Which agent's program this is, and the place of its own first argument. (b"", 0) for any other program.
    `script` is the place of the script that it runs as a runtime.

    An agent is a program of that name, or a script runtime that was given its script: one of that name, or
    the `cli.js` of its package.
    """
    if name in AGENTS:
        return name, 1
    if not script or runtime_name(name) not in SCRIPT_RUNTIMES:
        return b"", 0
    parts = argv[script].split(b"/")
    file = without_ending(parts[-1])
    if file in AGENTS:
        return file, script + 1
    if file == b"cli" and len(parts) > 1 and parts[-2] in AGENT_PACKAGES:
        return AGENT_PACKAGES[parts[-2]], script + 1
    return b"", 0


def is_session(argv: list[bytes], name: bytes, place: int) -> bool:
    """Whether the program of the agent `name`, its first own argument at `place`, is at work as an agent."""
    while place + 1 < len(argv) and argv[place] in AGENT_OPTIONS_WITH_VALUE[name]:
        place += 2
    return len(argv) <= place or argv[place] not in NOT_A_SESSION


def is_mcp_server(argv: list[bytes], name: bytes, script: int) -> bool:
    """Whether the process serves MCP: the name of the program, or of the script that a runtime was given, or
    of the package that the script lies in, has mcp as a word of its own; or the program was told to (`tool
    mcp serve`). `script` is the script's place.

    Package launchers aren't counted, since the server that they start is. What a container's client starts
    runs elsewhere, so the client stands for it.
    """
    if name in LAUNCHERS:
        return name in CONTAINER_CLIENTS and runs_mcp_image(argv)
    if has_mcp_word(name):
        return True
    place = 1
    if runtime_name(name) in RUNTIMES:
        if not script:
            return False
        if names_mcp(argv[script]):
            return True
        place = script + 1
    command, verb = (argv[place:place + 2] + [b"", b""])[:2]
    return command in MCP_COMMANDS or command == b"mcp" and (verb in MCP_VERBS or verb[:1] == b"-")


def runs_mcp_image(argv: list[bytes]) -> bool:
    """Whether a container's client was told to run an image that names an MCP server."""
    if b"run" not in argv[1:3]:
        return False
    place = argv.index(b"run", 1) + 1
    while place < len(argv) and argv[place][:1] == b"-":
        place += 2 if argv[place] in CONTAINER_OPTIONS_WITH_VALUE else 1
    return place < len(argv) and has_mcp_word(argv[place])


def mentions_mcp(cmdline: bytes) -> bool:
    """Whether a command line can be that of an MCP server at all; quick, since most can't."""
    lower = cmdline.lower()
    return b"mcp" in lower or b"modelcontextprotocol" in lower or b"supergateway" in lower


def has_mcp_word(name: bytes) -> bool:
    """Whether one of the words of a name is that of the protocol; words are what letters and digits form."""
    words = name.translate(WORD_BREAKS).split()
    return any(word in MCP_WORDS or word.endswith(MCP_ENDING) for word in words)


def names_mcp(script: bytes) -> bool:
    """Whether a script's path, or a module's name, names an MCP server."""
    parts = [part for part in script.split(b"/") if part]
    if b"node_modules" in parts:
        start = len(parts) - parts[::-1].index(b"node_modules")
        scoped = parts[start:start + 1] and parts[start][:1] == b"@"
        if any(has_mcp_word(part) for part in parts[start:start + (2 if scoped else 1)]):
            return True
    while len(parts) > 1 and parts[-1].split(b".", 1)[0] in GENERIC_NAMES:
        parts.pop()
    return bool(parts) and has_mcp_word(parts[-1])


def is_chromium_helper(cmdline: bytes) -> bool:
    """Whether the process is a helper of a Chromium: a program that was told which part to play. Helpers that
    are forked rather than started have all their arguments in the first one, with blanks between."""
    at = cmdline.find(CHROMIUM_OPTION)
    if at < 1 or cmdline[at - 1] not in b"\0 ":
        return False
    told = cmdline[at + len(CHROMIUM_OPTION):at + 64].replace(b"\0", b" ")
    return told.split(b" ", 1)[0] in CHROMIUM_TYPES


def bundle(kind: Kind, comm: bytes, cmdline: bytes) -> bytes:
    """The application that a Chromium's helper belongs to: its program, or the folder of the application that
    the program was told to be, or, where neither says, what the kernel calls it."""
    if kind.program.rstrip(b"0123456789") not in UNTOLD_BUNDLES:
        return kind.program
    _, told, path = cmdline.replace(b"\0", b" ").partition(APP_PATH)
    parts = [part for part in path.split(b" --", 1)[0].split(b"/") if part]
    if told and parts:
        while len(parts) > 1 and without_ending(parts[-1]) in (b"app", b"resources"):
            parts.pop()
        return without_ending(parts[-1])
    return comm or kind.program


def group(argv: list[bytes], name: bytes, agent_name: bytes, mcp: bool) -> str:
    """The group of a process, one of those told above."""
    if mcp:
        return "mcp"
    if agent_name:
        return agent_name.decode()
    if not argv or name in SYSTEM_NAMES or name.startswith(b"systemd-") or argv[0].startswith(SYSTEM_FOLDERS):
        return "system"
    return "runtime" if runtime_name(name) in RUNTIMES else "app"
