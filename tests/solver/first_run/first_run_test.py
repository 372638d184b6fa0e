"""docs/first-run.md stays true: its commands run as they stand there, and show what it shows."""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

PAGE = pathlib.Path(os.environ["SA_PAGE"]).read_text(encoding="utf-8")
# Times, memory, threads and instructions are those of a machine; all other numbers are those of the mechanics.
OF_THE_MACHINE = re.compile(r"kernels with [^,]+, |\d+:\d+ min|[\d.e+-]+ MB of memory|\d+ threads?|in [\d.e+-]+ s,|[\d.e+-]+ million")


def blocks():
    """(commands, what they show) from the first own directory on."""
    found = re.findall(r"^```(sh|text)\n(.*?)^```", PAGE, re.M | re.S)
    first = next(k for k, (kind, text) in enumerate(found) if "cd ~/first-run" in text) + 1
    return [(text, found[k + 1][1] if k + 1 < len(found) and found[k + 1][0] == "text" else "")
            for k, (kind, text) in enumerate(found) if kind == "sh" and k >= first]


@unittest.skipUnless(shutil.which("gmsh"), "needs gmsh")
class FirstRun(unittest.TestCase):
    def stopped(self, command, until):
        """Ends a run by a signal as soon as `until` says that there is something to go on from."""
        with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as run:
            end = time.monotonic() + 200
            while not until() and run.poll() is None and time.monotonic() < end:
                time.sleep(0.02)
            run.send_signal(signal.SIGINT)
            said = run.communicate()[1]
        self.assertEqual(run.returncode, 130, said)

    def test_commands_show_what_the_page_shows(self):
        whole = blocks()
        self.assertEqual(len(whole), 8)
        with tempfile.TemporaryDirectory(prefix="sharedanalysis_test_") as directory:
            os.chdir(directory)
            for commands, shown in whole:
                last = "long.toml --restart" in commands
                if last:  # the run that is stopped has its own time
                    commands = "\n".join(commands.splitlines()[:1])
                done = subprocess.run(["bash", "-ec", commands.replace("report results", "report results --no-pictures")],
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
                self.assertEqual(done.returncode, 0, commands + done.stdout)
                said = [OF_THE_MACHINE.sub("", line) for line in done.stdout.splitlines()]
                for line in shown.splitlines():
                    self.assertIn(OF_THE_MACHINE.sub("", line), said)
            state = pathlib.Path("long/long.restart")
            self.stopped(["sharedanalysis-explicit", "long.toml", "-q", "-o", "long"], state.exists)
            before = state.stat().st_mtime_ns
            self.stopped(["sharedanalysis-explicit", "long.toml", "--restart", "-q", "-o", "long"],
                         lambda: state.stat().st_mtime_ns > before)
            self.assertIn("goes on from increment", pathlib.Path("long/long.msg").read_text(encoding="utf-8"))
            self.assertTrue(pathlib.Path("results/buffer.html").stat().st_size > 10000)
            os.chdir("/")


if __name__ == "__main__":
    unittest.main()
