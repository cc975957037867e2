"""Many photos, streams and files: batch_test.py TOOL ENGINE"""
import hashlib
import json
import os
import random
import signal
import socket
import stat
import subprocess
import time
import unittest
from pathlib import Path

from tool_case import TOOL, ToolCase


class BatchTest(ToolCase):
    def setUp(self):
        super().setUp()
        self.draw("photo.jpg", 1)
        self.run_tool("apply", "sepia", "photo.jpg", "sepia.jpg")
        self.sepia = Path("sepia.jpg").read_bytes()

    def draw(self, name, seed, width=64, height=48):
        Path(name).parent.mkdir(parents=True, exist_ok=True)
        Path("raw").write_bytes(random.Random(seed).randbytes(width * height * 3 // 2))
        self.run_tool("convert", f"--size={width}x{height}", "--from=nv21", "--to=jpg", "raw", name)

    def report(self, name="report"):
        lines = [json.loads(line) for line in Path(name).read_bytes().decode().splitlines()]
        for line in lines:
            self.assertEqual(list(line), ["in", "out", "status", "code", "ms", "notes"])
        return {line["in"]: (line["status"], line["code"]) for line in lines}

    def sums(self, folder):
        return {str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
                for path in Path(folder).rglob("*") if path.is_file()}

    def test_streams_and_links_stay_what_they_are(self):
        os.mkfifo("pipe")
        Path("other").mkdir()
        Path("old.jpg").write_bytes(b"old")
        for link, target in (("to_pipe", "pipe"), ("to_file", "old.jpg"), ("to_link", "to_file"), ("to_nothing", "other/new.jpg"),
                             ("to_output", "/proc/self/fd/1"), ("circle", "circle")):
            os.symlink(target, link)
        for link, reads in (("to_pipe", "pipe"), ("pipe", "pipe"), ("to_file", "old.jpg"), ("to_link", "old.jpg"),
                            ("to_nothing", "other/new.jpg"), ("to_output", "redirected"), ("-", "redirected")):
            reader = subprocess.Popen(["cat", "pipe"], stdout=subprocess.PIPE) if reads == "pipe" else None
            with open("redirected", "wb") as redirected:
                redirected.write(b"before")
                redirected.flush()
                subprocess.run([TOOL, "apply", "sepia", "photo.jpg", link], stdout=redirected, check=True)
            made = reader.communicate()[0] if reader else Path(reads).read_bytes()
            self.assertEqual(made, b"before" * (reads == "redirected") + self.sepia, link)
            self.assertTrue(link == "-" or os.path.islink(link) or stat.S_ISFIFO(os.stat(link).st_mode), link)
        ours, theirs = socket.socketpair()  # no name opens that anew
        with ours, theirs:
            subprocess.run([TOOL, "apply", "sepia", "photo.jpg", "to_output"], stdout=theirs, check=True)
            theirs.shutdown(socket.SHUT_WR)
            self.assertEqual(ours.makefile("rb").read(), self.sepia)
        self.run_tool("apply", "sepia", "photo.jpg", "circle", code=1, says="symbolic links")
        self.run_tool("apply", "sepia", "photo.jpg", "other", "--dry-run")
        result = subprocess.run(f"cat photo.jpg | '{TOOL}' apply sepia - - | cat", shell=True, capture_output=True)
        self.assertEqual((result.stdout, result.stderr), (self.sepia, b""))
        self.assertFalse(list(Path(".").rglob(".*")))

    def test_rights_and_times(self):
        os.chmod("photo.jpg", 0o600)
        os.utime("photo.jpg", (1e9, 1e9))
        Path("old.jpg").write_bytes(b"old")
        os.chmod("old.jpg", 0o664)
        for output, mode in (("new.jpg", 0o600), ("old.jpg", 0o664)):
            for options in ([], ["--preserve"]):
                self.run_tool("apply", "sepia", "photo.jpg", output, *options)
                self.assertEqual(stat.S_IMODE(os.stat(output).st_mode), mode)
                self.assertEqual(os.stat(output).st_mtime == 1e9, bool(options))
        self.run_tool("apply", "lomo", "photo.jpg", "old.jpg", "--no-clobber", code=1, says="exists and is not replaced")
        self.run_tool("apply", "lomo", "photo.jpg", "old.jpg", "--skip-existing")
        self.assertEqual(Path("old.jpg").read_bytes(), self.sepia)

    def test_chains_and_mix(self):
        for command, steps in (("sepia,lomo", "sepia lomo"), ("PrettyBlue,sepia,PrettyBlue", "PrettyBlue sepia PrettyBlue")):
            Path("argb").write_bytes(bytes((90, 120, 200, 255)) * 256)
            self.run_tool("convert", "--size=16x16", "--from=argb", "--to=jpg", "--quality=100", "argb", "flat.jpg")
            self.run_tool("apply", command, "flat.jpg", "chain.jpg", "--quality=100")
            for step in steps.split():  # a JPEG of one colour keeps it, but for rounding
                self.run_tool("apply", step, "flat.jpg", "flat.jpg", "--quality=100")
            chain, single = (self.pixel(name) for name in ("chain.jpg", "flat.jpg"))
            self.assertLessEqual(max(abs(a - b) for a, b in zip(chain, single)), 3, command)
        self.run_tool("apply", "sepia", "photo.jpg", "mixed.jpg", "--mix=25")
        self.run_tool("blend", "--weight=64", "sepia.jpg", "photo.jpg", "blended.jpg")
        self.assertLessEqual(max(abs(a - b) for a, b in zip(self.pixel("mixed.jpg"), self.pixel("blended.jpg"))), 6)
        self.run_tool("apply", "sepia", "photo.jpg", "none.jpg", "--mix=0")
        self.run_tool("blend", "photo.jpg", "photo.jpg", "same.jpg")
        self.assertEqual(Path("none.jpg").read_bytes(), Path("same.jpg").read_bytes())

    def pixel(self, name):
        self.run_tool("convert", "--from=jpg", "--to=argb", name, "pixels")
        return Path("pixels").read_bytes()[:3]

    def test_folders_count_what_they_leave_out(self):
        for name in ("in/a.jpg", "in/sub/b.JPG"):
            self.draw(name, 1)
        os.mkfifo("in/x.jpg")
        os.symlink("nothing", "in/y.jpg")
        for name in ("in/notes.txt", "in/film.mov", "in/.hidden"):
            Path(name).touch()
        self.run_tool("apply", "sepia", "in", "out", "--recursive",
                      says="in: left out 2 without a photo's ending and 2 that are no files")
        self.run_tool("apply", "sepia", "in", "quiet", "--recursive", "--quiet")
        self.assertEqual(self.sums("quiet"), self.sums("out"))
        self.assertEqual(sorted(self.sums("out")), ["a.jpg", "sub/b.JPG"])

    def test_lists_names_and_reports(self):
        odd = os.fsdecode(b"in/\xff\xc3\xa9 \n\"x.jpg")
        for name in ("in/a.jpg", "in/b.jpg", "other/a.jpg", odd):
            self.draw(name, 1)
        Path("in/bad.jpg").write_bytes(b"none")
        os.mkfifo("pipe.jpg")
        Path("list").write_bytes(b"\0".join(os.fsencode(name) for name in (
            "in/a.jpg", odd, "in/bad.jpg", "in/gone.jpg", "other/a.jpg", "in/a.jpg", "in/b.jpg", "in/b-sepia.jpg", "pipe.jpg")))
        template = "--output={dir}/{stem}-{effect}{ext}"
        for already in (False, True):
            self.run_tool("apply", "sepia", "--files-from=list", "-0", template, "--report=report", "--skip-existing",
                          code=1, says="left out 1 of the inputs.*bad.jpg: not a JPEG")
            done = ("skipped" if already else "done", 0)
            self.assertEqual(self.report(), {"in/a.jpg": done, odd: done, "other/a.jpg": done, "in/b.jpg": done,
                                             "in/bad.jpg": ("failed", 3), "in/gone.jpg": ("failed", 3), "pipe.jpg": ("failed", 3)})
        self.assertEqual(Path(odd.replace(".jpg", "-sepia.jpg")).read_bytes(), self.sepia)
        # By folder: two of a name stop each other alone; an input is never replaced.
        result = self.run_tool("apply", "sepia", "in/a.jpg", "other/a.jpg", "in/b.jpg", "flat", "--dry-run", code=1,
                               says="in/a.jpg and other/a.jpg would both be written to flat/a.jpg")
        self.assertEqual(result, "in/b.jpg -> flat/b.jpg\n")
        self.assertFalse(Path("flat").exists())
        self.run_tool("apply", "sepia", "in/a.jpg", "in/b.jpg", "--output={dir}/b.jpg", code=1, says="would")
        self.run_tool("apply", "sepia", "in/b.jpg", "in/a.jpg", "--output=deep/{effect}/{dir}/{{{name}", "--verbose",
                      says="in/a.jpg -> deep/sepia/in/{a.jpg: done, \\d+ ms")
        self.assertEqual(Path("deep/sepia/in/{b.jpg").read_bytes(), self.sepia)
        self.assertEqual(Path("in/b.jpg").read_bytes(), Path("photo.jpg").read_bytes())
        lines = self.run_tool("apply", "sepia", "in/a.jpg", "deep", "--report=-").splitlines()
        self.assertEqual([json.loads(line)["out"] for line in lines], ["deep/a.jpg"])

    def test_names_that_look_like_something_else(self):
        for name in ("-x.jpg", "b.jpg"):
            Path(name).write_bytes(Path("photo.jpg").read_bytes())
        self.run_tool("apply", "sepia", "--output={stem}-o{ext}", "--", "-x.jpg", "b.jpg")  # no folder in these names
        self.assertEqual(Path("-x-o.jpg").read_bytes(), self.sepia)
        for line_end, names, code, says in (
                (b"\r\n", (b"b.jpg", b"./b.jpg", b"photo.jpg"), 0, ""), (b"\0", (b"b.jpg", b"photo.jpg"), 2, "need -0"),
                (b"\n", (), 0, "no names")):
            Path("list").write_bytes(b"".join(name + line_end for name in names))
            self.run_tool("apply", "sepia", "--files-from=list", f"out{code}", code=code, says=says)
        self.assertEqual(sorted(os.listdir("out0")), ["b.jpg", "photo.jpg"])
        self.run_tool("apply", "sepia", "photo.jpg", "", code=2, says="a name is empty")
        self.run_tool("resize", "--size=9", "photo.jpg", "", code=2, says="empty")

    def test_messages_never_go_into_a_file(self):
        # With the standard error closed, the report would be numbered as that.
        self.run_tool("apply", "sepia", "photo.jpg", "same.jpg", "--report=whole")
        subprocess.run(f"'{TOOL}' apply sepia photo.jpg o.jpg --report=report --verbose 2>&-", shell=True, check=True)
        self.assertEqual(list(self.report()), list(self.report("whole")))
        self.assertEqual(Path("o.jpg").read_bytes(), self.sepia)

    def test_shards_share_the_photos(self):
        names = [f"IMG_{i:04}.jpg" for i in range(300)]
        for name in names:
            Path(name).touch()
        Path("list").write_text("\n".join(names))
        parts = []
        for i in (1, 2, 3):
            lines = self.run_tool("apply", "sepia", "--files-from=list", "--dry-run", f"--shard={i}/3", "out").splitlines()
            parts.append([line.split(" -> ")[0] for line in lines])
        self.assertEqual(sorted(sum(parts, [])), names)
        self.assertGreater(min(map(len, parts)), 70)
        self.assertEqual([part[:2] for part in parts],  # on every machine, in every version
                         [["IMG_0004.jpg", "IMG_0008.jpg"], ["IMG_0006.jpg", "IMG_0010.jpg"], ["IMG_0000.jpg", "IMG_0001.jpg"]])

    def test_killed_runs_go_on(self):
        for i in range(40):
            self.draw(f"in/{i}.jpg", i, 640, 480)
        self.run_tool("apply", "sepia", "in", "whole")
        expected = self.sums("whole")
        kept = {}
        for _ in range(3):
            run = subprocess.Popen([TOOL, "apply", "sepia", "in", "out", "--skip-existing", "--jobs=3", "--report=report"])
            while run.poll() is None and len(list(Path("out").glob("*"))) < len(kept) + 4:
                time.sleep(0.001)
            run.send_signal(signal.SIGKILL)
            run.wait()
            times = {path: path.stat().st_mtime_ns for path in Path("out").iterdir() if path.name[0] != "."}
            self.assertEqual(times, times | kept)  # what was there is not made again
            kept = times
            self.assertEqual(self.sums("out").items() & expected.items(), self.sums("out").items())
        self.run_tool("apply", "sepia", "in", "out", "--skip-existing", "--report=report")
        self.assertEqual(self.sums("out"), expected)
        states = self.report()
        self.assertEqual({f"in/{path.name}" for path in kept}, {name for name in states if states[name] == ("skipped", 0)})

    def test_full_disk(self):
        for i in range(12):
            self.draw(f"in/{i}.jpg", i, 640, 480)
        run = [TOOL, "apply", "sepia", "in", "disk/out", "--report=report", "--jobs=1"]
        result = subprocess.run(["unshare", "-rm", "sh", "-c", 'mkdir -p disk && mount -t tmpfs -o size=1m none disk && '
                                 '"$@"; code=$?; mkdir kept; cp -a disk/. kept; exit $code', "sh", *run],
                                capture_output=True, text=True)
        if "mount:" in result.stderr or "unshare:" in result.stderr:  # a container; a limit of the shell's is next to it
            result = subprocess.run(["bash", "-c", 'trap "" XFSZ; ulimit -f 100; mkdir -p disk; "$@"; code=$?; mv disk kept; '
                                     'exit $code', "sh", *run], capture_output=True, text=True)
        self.assertEqual(result.returncode, 1, result.stderr)
        states = self.report()
        self.assertEqual(set(states.values()), {("done", 0), ("failed", 75)} if len(os.listdir("kept/out")) else
                         {("failed", 75)})
        self.run_tool("apply", "sepia", "in", "whole")
        made, whole = self.sums("kept/out"), self.sums("whole")
        self.assertEqual(made, {name: whole[name] for name in made})
        self.assertEqual({f"in/{name}" for name in made}, {name for name in states if states[name][1] == 0})

    def test_processors_and_memory(self):
        for i in range(3):
            self.draw(f"in/{i}.jpg", i)
        one = {min(os.sched_getaffinity(0))}
        for options, at_once in (([], 1), (["--jobs=2"], 2)):
            result = subprocess.run([TOOL, "apply", "sepia", "in", "out", "--verbose", "--memory=1M", *options],
                                    preexec_fn=lambda: os.sched_setaffinity(0, one), capture_output=True, text=True)
            self.assertEqual(result.returncode, 0)
            self.assertIn(f"3 photos, {at_once} at once\n", result.stderr)

    def test_bad_use_is_one_line_and_touches_nothing(self):
        Path("mine").mkdir()
        Path("mine/notes").write_text("mine")
        before = self.sums(".")
        for command, code, says in (
                ("sepia", 2, "FILES"), ("sepia photo.jpg", 2, "FILES"), ("sepia --output={name}", 2, "FILES"),
                ("sepia,,lomo photo.jpg o.jpg", 2, 'unknown effect ""'), ("sepia,lome photo.jpg o.jpg", 2, '"lomo"'),
                ("sepia,lomo photo.jpg o.jpg --radius=1", 2, "not of sepia, lomo"),
                ("sepia photo.jpg o.jpg --mix=101", 2, "--mix"), ("sepia photo.jpg o.jpg --mix=nan", 2, "--mix"),
                ("sepia --files-from=no out", 3, "no: No such file"), ("sepia --files-from=mine out", 3, "mine: Is a dir"),
                ("sepia photo.jpg o.jpg -0", 2, "files-from"), ("sepia photo.jpg --output={nme}", 2, "{nme} is unknown"),
                ("sepia photo.jpg --output=a}b", 2, 'lone "}"'), ("sepia photo.jpg --output={stem", 2, 'lone "{"'),
                ("sepia photo.jpg --output={dir}/", 2, "names a folder"),
                ("sepia photo.jpg --output={name}", 2, "photo.jpg would be replaced"),
                ("sepia photo.jpg --output=mine/notes/{name}", 1, "mine/notes"),
                ("sepia photo.jpg o.jpg --memory=0", 2, "memory"), ("sepia photo.jpg o.jpg --memory=-1", 2, "memory"),
                ("sepia photo.jpg o.jpg --dry-run=no", 2, "dry-run"), (f"sepia {'x' * 256} o.jpg", 3, "cannot read x.*too long"),
                ("sepia photo.jpg sepia.jpg o --shard=0/2", 2, "I from 1 to N"), ("sepia photo.jpg o.jpg --shard=3/2", 2, "3/2"),
                ("sepia photo.jpg o.jpg --shard=1", 2, "I/N"), ("sepia photo.jpg o.jpg --memory=2Q", 2, "memory"),
                ("sepia photo.jpg o.jpg --report=mine/notes", 2, "no report"),
                ("sepia photo.jpg o.jpg --report=photo.jpg", 2, "no report"),
                ("sepia photo.jpg o.jpg --report=no/r", 1, "no/r: No such"), ("sepia photo.jpg - --report=-", 2, "taken"),
                ("sepia photo.jpg o.jpg --quiet --verbose", 2, "quiet"), ("sepia - photo.jpg out", 2, "- stands for"),
                ("sepia photo.jpg mine/notes/o.jpg", 1, "Not a directory"), ("sepia mine o", 3, "no photos"),
                ("sepia mine mine", 2, "replaced"), ("sepia photo.jpg sepia.jpg mine/notes", 2, "is a file")):
            self.run_tool("apply", *command.split(), code=code, says=says)
            self.assertEqual(len(self.said), 1, self.said)
            self.assertEqual(self.sums("."), before, command)
            self.assertEqual(sorted(os.listdir()), ["mine", "photo.jpg", "raw", "sepia.jpg"])


unittest.main()
