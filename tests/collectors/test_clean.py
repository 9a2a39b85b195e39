# SPDX-License-Identifier: Apache-2.0
import unittest
from pathlib import Path

from fabricated_machine import Machine, waiting
from test_live_machine import SYSTEM_PATH, answer

from ostrel_lib.maintenance import clean

SERVER = ("node", "/home/u/.npm/_npx/1f/node_modules/.bin/mcp-server-files", "/home/u")
SCOPE = b"0::/user.slice/user-1000.slice/session-2.scope\n"
SERVICE = b"0::/user.slice/user-1000.slice/user@1000.service/app.slice/notes.service\n"


def machine(test, *processes, first: str = "/sbin/init") -> Machine:
    """Processes as (pid, parent, arguments), below a first process, of which "" shows nothing."""
    box = Machine(test)
    if first:
        box.process(1, first, ppid=0)
    for pid, parent, *argv in processes:
        box.process(pid, *argv, ppid=parent, mib=pid)
        box.write(f"proc/{pid}/cgroup", SCOPE)
    return box


def lead_a_session(box: Machine, pid: int) -> None:
    """The process leads its session, as one does that a service manager starts."""
    path = f"proc/{pid}/stat"
    words = Path(box.root, path).read_bytes().split(b" ")
    words[5] = b"%d" % pid
    box.write(path, b" ".join(words))


class CleanTest(unittest.TestCase):
    def audit(self, box: Machine) -> tuple:
        answer = clean(box.root + "/proc")
        self.assertEqual(answer["terminated"], 0)
        self.assertEqual(answer["found"], len(answer["detached"]))
        return answer["mcp_processes"], [server["pid"] for server in answer["detached"]]

    def test_a_server_is_detached_once_the_one_that_started_it_is_gone(self):
        npm, shell = ("npm exec mcp-server-files",), ("sh", "-c", "mcp-server-files /home/u")
        manager = (5, 1, "/usr/lib/systemd/systemd", "--user")
        for case, expected, processes, first in (
            ("below its agent", [], [(10, 1, "claude"), (11, 10, *SERVER)], "/sbin/init"),
            ("below launchers of its agent", [],
             [(10, 1, "claude"), (11, 10, *npm), (12, 11, *shell), (13, 12, *SERVER)], "/sbin/init"),
            ("below an editor", [], [(10, 1, "/usr/share/code/code"), (11, 10, *SERVER)], "/sbin/init"),
            ("taken over by the first process", [11], [(11, 1, *SERVER)], "/sbin/init"),
            ("with its launchers", [13], [(11, 1, *npm), (12, 11, *shell), (13, 12, *SERVER)], "/sbin/init"),
            ("taken over by the user's manager", [11], [manager, (11, 5, *SERVER)], "/sbin/init"),
            ("and the first process isn't shown", [11], [(11, 1, *SERVER)], ""),
            ("of a parent that isn't shown", [], [(11, 10, *SERVER)], ""),
            ("of a container's own program", [], [(11, 1, *SERVER)], "claude"),
            ("in a circle", [], [(11, 12, *shell), (12, 11, *SERVER)], "/sbin/init"),
            ("several, the largest first", [12, 11], [(11, 1, "a-mcp"), (12, 1, "b-mcp")], "/sbin/init")):
            servers = sum(argv[0] == "node" or argv[0].endswith("-mcp") for _, _, *argv in processes)
            self.assertEqual(self.audit(machine(self, *processes, first=first)), (servers, expected), case)

    def test_a_service_belongs_to_its_manager(self):
        for group, leads, expected in ((SERVICE, True, []), (SERVICE, False, [11]), (SCOPE, True, [11]),
                                       (b"", True, [11]), (b"\xff\n:::\n", True, [11])):
            box = machine(self, (11, 1, *SERVER))
            box.write("proc/11/cgroup", group)
            if leads:
                lead_a_session(box, 11)
            self.assertEqual(self.audit(box), (1, expected), (group, leads))
        # No process, and no reading of them, is an audit too.
        self.assertEqual(self.audit(Machine(self)), (0, []))
        self.assertEqual(clean("/nowhere/at/all"),
                         {"mcp_processes": 0, "found": 0, "terminated": 0, "detached": []})

    def test_the_script_counts_a_server_and_leaves_it_alone(self):
        script = "print(flush=True); input()"
        server = waiting(self, "marked-mcp", "-c", script, executable="/usr/bin/python3")
        told = answer("clean", PATH=SYSTEM_PATH)
        self.assertGreaterEqual(told["mcp_processes"], 1)
        self.assertNotIn(server.pid, [found["pid"] for found in told["detached"]])
        self.assertIsNone(server.poll())
