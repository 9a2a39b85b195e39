# SPDX-License-Identifier: Apache-2.0
"""What kind of program a process is, judged by its first arguments. All rules work on the bytes of the
command line.

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
SCRIPT_ENDINGS = (b".js", b".mjs", b".cjs")

NOT_A_SESSION = frozenset((
    b"mcp", b"mcp-server", b"app-server", b"exec-server", b"login", b"logout", b"auth", b"setup-token",
    b"config", b"completion", b"install", b"update", b"upgrade", b"doctor", b"help", b"--help", b"-h",
    b"--version", b"-v", b"-V",
))
"""First arguments that make an agent's program do something else than be an agent: serve other programs, or
answer one question about itself."""

SCRIPT_RUNTIMES = frozenset((b"node", b"nodejs", b"bun", b"deno"))
LAUNCHERS = frozenset((b"npm", b"npx", b"pnpm", b"yarn", b"uv", b"uvx", b"pipx", b"docker", b"podman"))
"""They start the program that counts as a child of their own."""
RUNTIMES = SCRIPT_RUNTIMES | LAUNCHERS - {b"docker", b"podman"} | frozenset((
    b"python", b"pypy", b"ruby", b"java", b"perl", b"php", b"dotnet", b"lua", b"luajit", b"beam.smp",
    b"julia", b"Rscript", b"tsx", b"ts-node",
))
OPTIONS_WITH_VALUE = frozenset((
    b"-r", b"--require", b"--import", b"--loader", b"--experimental-loader", b"-C", b"--conditions", b"-W",
    b"-X", b"-cp", b"-classpath", b"--class-path", b"--env-file",
))
INLINE_CODE = frozenset((b"-c", b"-e", b"--eval", b"-p", b"--print", b"-pe"))

MCP_WORDS = frozenset((b"mcp", b"fastmcp", b"modelcontextprotocol"))
MCP_COMMANDS = frozenset((b"mcp-server", b"mcp-serve", b"start-mcp-server"))
MCP_VERBS = frozenset((b"serve", b"server", b"start", b"run", b"stdio", b"gateway"))
GENERIC_NAMES = frozenset((
    b"index", b"main", b"server", b"cli", b"app", b"run", b"start", b"stdio", b"__main__", b"dist", b"build",
    b"src", b"bin", b"lib", b"out",
))
"""File and folder names that don't tell what a script is; the folder above them does."""

SYSTEM_FOLDERS = (
    b"/usr/lib/systemd/", b"/lib/systemd/", b"/usr/libexec/", b"/usr/sbin/", b"/sbin/", b"/usr/lib/polkit",
)
SYSTEM_NAMES = frozenset((
    b"systemd", b"(sd-pam)", b"init", b"dbus-daemon", b"dbus-broker", b"dbus-broker-launch", b"Xorg",
    b"Xwayland", b"pipewire", b"pipewire-pulse", b"wireplumber", b"pulseaudio", b"gnome-shell", b"kwin_x11",
    b"kwin_wayland", b"plasmashell", b"xfwm4", b"agetty", b"login", b"sshd",
))

CHROMIUM_OPTION = b"--type="
CHROMIUM_TYPES = frozenset((
    b"renderer", b"gpu-process", b"utility", b"zygote", b"broker", b"ppapi", b"plugin",
))

WORD_BREAKS = bytes(byte if bytes((byte,)).isalnum() else 32 for byte in bytes(range(256)).lower())
"""Lower case for letters, a blank for what isn't a letter or digit."""


def program(argv: list[bytes]) -> bytes:
    """The name of the program, without its folder. Of a title that a program wrote over its arguments, such
    as "npm exec tool" or "/opt/browser --type=renderer", the part that names the program."""
    if not argv:
        return b""
    first = argv[0]
    if b" " in first:
        if first[:1] != b"/":
            return first.split(b" ", 1)[0]
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


def agent(argv: list[bytes], name: bytes) -> tuple[bytes, int]:
    """Which agent's program this is, and the place of its own first argument. (b"", 0) for any other program.

    An agent is a program of that name, or a script runtime that was given its script: one of that name, or
    the `cli.js` of its package.
    """
    if name in AGENTS:
        return name, 1
    if runtime_name(name) not in SCRIPT_RUNTIMES:
        return b"", 0
    place = script_place(argv)
    if not place:
        return b"", 0
    parts = argv[place].split(b"/")
    stem = parts[-1]
    for ending in SCRIPT_ENDINGS:
        if stem.endswith(ending):
            stem = stem[:-len(ending)]
            break
    if stem in AGENTS:
        return stem, place + 1
    if stem == b"cli" and len(parts) > 1 and parts[-2] in AGENT_PACKAGES:
        return AGENT_PACKAGES[parts[-2]], place + 1
    return b"", 0


def is_session(argv: list[bytes], place: int) -> bool:
    """Whether an agent's program, its first own argument at `place`, is at work as an agent."""
    return len(argv) <= place or argv[place] not in NOT_A_SESSION


def is_mcp_server(argv: list[bytes], name: bytes) -> bool:
    """Whether the process serves MCP: the name of the program, or of the script that a runtime was given, or
    of the package that the script lies in, has mcp as a word of its own; or the program was told to (`tool
    mcp serve`). Package launchers aren't counted, since the server that they start is."""
    if name in LAUNCHERS:
        return False
    if has_mcp_word(name):
        return True
    place = 1
    if runtime_name(name) in RUNTIMES:
        place = script_place(argv)
        if not place:
            return False
        if names_mcp(argv[place]):
            return True
        place += 1
    command, verb = (argv[place:place + 2] + [b"", b""])[:2]
    return command in MCP_COMMANDS or command == b"mcp" and verb in MCP_VERBS


def mentions_mcp(cmdline: bytes) -> bool:
    """Whether a command line can be that of an MCP server at all; quick, since most can't."""
    lower = cmdline.lower()
    return b"mcp" in lower or b"modelcontextprotocol" in lower


def has_mcp_word(name: bytes) -> bool:
    """Whether one of the words of a name is that of the protocol; words are what letters and digits form."""
    return not MCP_WORDS.isdisjoint(name.translate(WORD_BREAKS).split())


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


def group(argv: list[bytes], name: bytes, agent_name: bytes, mcp: bool) -> str:
    """The group of a process, one of those told above."""
    if mcp:
        return "mcp"
    if agent_name:
        return agent_name.decode()
    if not argv or name in SYSTEM_NAMES or name.startswith(b"systemd-") or argv[0].startswith(SYSTEM_FOLDERS):
        return "system"
    return "runtime" if runtime_name(name) in RUNTIMES else "app"
