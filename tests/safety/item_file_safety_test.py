"""What is left of an item's file when its writer is killed, when the disk fails, and when others write it too.

Each case makes one change again and again: once undisturbed, to learn which calls it makes, then with every fault at
every one of them. Takes the item_file_tool and the fault injector as arguments.
"""

import os
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

import faults

OLD = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:1\r\nSUMMARY:Old\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n"
CREATED = OLD.replace("SUMMARY:Old", "SUMMARY:New")
OURS = "X-OURS:1\r\n"
THEIRS = "X-THEIRS:1\r\n"


def with_line(text, line):
    return text.replace("END:VEVENT", line + "END:VEVENT")


# A file system as it usually is; one without exchange; one that knows no flags; one that has no second names either.
FILE_SYSTEMS = ("", "exchange", "exchange noreplace", "exchange noreplace link")


class Change:
    """A change to try: what there is before, what the tool is told, and what there is afterwards."""

    def __init__(self, name, arguments, old, new, is_linked=False):
        self.name = name
        self.arguments = arguments
        self.old = old
        self.new = new
        self.is_linked = is_linked


CHANGES = (
    Change("create", ("create", "a.ics", "New"), {}, {"a.ics": CREATED}),
    Change("add", ("add", "a.ics", "X-OURS:1"), {"a.ics": OLD}, {"a.ics": with_line(OLD, OURS)}),
    Change("remove", ("remove", "a.ics", "Old"), {"a.ics": OLD}, {}),
    Change("add to a linked file", ("add", "a.ics", "X-OURS:1"), {"a.ics": OLD}, {"a.ics": with_line(OLD, OURS)}, True),
    Change("remove a linked file", ("remove", "a.ics", "Old"), {"a.ics": OLD}, {}, True),
)


class Bench:
    """A collection with one change's files, next to the folder that linked files are really in."""

    def __init__(self, change):
        self.change = change
        self.root = Path(tempfile.mkdtemp(prefix="safety-", dir=faults.SCRATCH))
        self.tree = self.root / "tree"
        self.collection = self.tree / "collection"
        self.injector = faults.Injector(LIBRARY, self.tree, self.root / "log")
        self.prepare()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root)

    def prepare(self):
        shutil.rmtree(self.tree, ignore_errors=True)
        self.collection.mkdir(parents=True)
        (self.tree / "real").mkdir()
        for name, text in self.change.old.items():
            # A mode and an owner of their own, so that keeping them takes calls that can fail.
            real = self.real_file(name)
            real.write_bytes(text.encode())
            real.chmod(0o640)
            if os.geteuid() == 0:
                os.chown(real, 1234, 1234)
            if self.change.is_linked:
                (self.collection / name).symlink_to(real)

    def real_file(self, name="a.ics"):
        return (self.tree / "real" if self.change.is_linked else self.collection) / name

    def run(self, plan="", without="", arguments=None):
        operation, *rest = arguments or self.change.arguments
        command = [TOOL, operation, str(self.collection), *rest]
        outcome = self.injector.run(command, plan=plan, without=without, target=self.real_file())
        return outcome, outcome.output.strip()

    def items(self):
        return faults.visible_items(self.collection)

    def litter(self):
        return faults.hidden_texts(self.tree)


class EveryFault(unittest.TestCase):
    def test_leaves_the_old_or_the_new_and_the_next_change_works(self):
        for change in CHANGES:
            for without in FILE_SYSTEMS:
                with Bench(change) as bench:
                    outcome, answer = bench.run(without=without)
                    self.assertEqual(answer, "ok", change.name)
                    for call, action in faults.single_faults(outcome.calls):
                        with self.subTest(change=change.name, without=without, call=call, action=action):
                            bench.prepare()
                            self.check_outcome(bench, without, call, action)
                            self.check_litter(bench, call, action)
                            self.check_next_change(bench, without)

    def check_outcome(self, bench, without, call, action):
        outcome, answer = bench.run(f"{call.number}:{action}", without)
        items = bench.items()
        if action in faults.CRASHES:
            self.assertTrue(outcome.was_killed)
            self.assertIn(items, (bench.change.old, bench.change.new))
        elif answer == "ok":
            self.assertEqual(items, bench.change.new)
        else:
            self.assertTrue(answer.startswith("failed: "), answer)
            self.assertEqual(items, bench.change.old)
        is_no_failure = action == "EINTR" and call.name in ("open", "write", "fsync", "flock")
        if is_no_failure or action == "short":
            self.assertEqual(answer, "ok")

    def check_litter(self, bench, call, action):
        # Left by the dead, and where the removal of the temporary file itself failed.
        if action not in faults.CRASHES and call.name != "unlink":
            self.assertEqual(bench.litter(), {})

    def check_next_change(self, bench, without):
        left = bench.items()
        if left:
            _, answer = bench.run(without=without, arguments=("add", "a.ics", "X-NEXT:1"))
            self.assertEqual(bench.items(), {"a.ics": with_line(left["a.ics"], "X-NEXT:1\r\n")})
        else:
            _, answer = bench.run(without=without, arguments=("create", "b.ics", "New"))
            self.assertEqual(bench.items(), {"b.ics": CREATED})
        self.assertEqual(answer, "ok")

    def test_failures_say_what_the_system_says(self):
        for change in CHANGES:
            with Bench(change) as bench:
                outcome, _ = bench.run()
                for call in outcome.calls:
                    if call.name in ("open", "write", "fsync", "rename", "exchange"):
                        bench.prepare()
                        _, answer = bench.run(f"{call.number}:ENOSPC")
                        self.assertEqual(answer, "failed: No space left on device", (change.name, call))

    def test_files_are_synced_before_and_folders_after(self):
        for change in CHANGES:
            for without in FILE_SYSTEMS:
                with Bench(change) as bench:
                    outcome, _ = bench.run(without=without)
                    # A link that leads nowhere is no item: its own end need not be durable.
                    ends = str(bench.collection / "a.ics") if change.is_linked else ""
                    calls = [call for call in outcome.calls if call.path != ends]
                    self.assertEqual(faults.order_mistakes(calls), [], (change.name, without))

    def test_undisturbed_changes_cost_no_needless_sync(self):
        for change in CHANGES:
            with Bench(change) as bench:
                outcome, _ = bench.run()
                syncs = sum(call.name == "fsync" for call in outcome.calls)
                self.assertEqual(syncs, 1 if "remove" in change.name else 2, change.name)


class EveryInterference(unittest.TestCase):
    """Another program, which knows nothing of locks, writes the file between any two calls of ours."""

    ADD, REMOVE, ADD_LINKED, REMOVE_LINKED = CHANGES[1:]

    def for_every_moment(self, change, way, check, more_plans=lambda calls, call: ("",)):
        with Bench(change) as bench:
            undisturbed, _ = bench.run()
            self.assertGreater(len(undisturbed.calls), 3)
            for call in undisturbed.calls:
                for moment in (f"{call.number}:{way}-before", f"{call.number}:{way}-after"):
                    plan = f"{moment}={bench.root / 'theirs'}"
                    for more in more_plans(undisturbed.calls, call):
                        with self.subTest(change=change.name, moment=moment, call=call, more=more):
                            bench.prepare()
                            (bench.root / "theirs").write_bytes(self.their_text().encode())
                            check(bench, f"{plan} {more}")

    @staticmethod
    def their_text():
        return with_line(OLD, THEIRS).replace("SUMMARY:Old", "SUMMARY:Theirs")

    def test_a_change_is_made_again_on_a_file_that_was_renamed_into_place(self):
        both = with_line(self.their_text(), OURS)
        seen = set()

        def check(bench, plan):
            outcome, answer = bench.run(plan)
            self.assertEqual(answer, "ok")
            text = bench.items()["a.ics"]
            # Theirs alone is right only when they came after our file was in place.
            exchanges = [call.number for call in outcome.calls if call.name == "exchange"]
            number, _, moment = plan.split("=")[0].partition(":")
            came_last = int(number) > exchanges[-1] or (int(number) == exchanges[-1] and moment.endswith("after"))
            self.assertEqual(text, self.their_text() if came_last else both)
            if int(number) < exchanges[0]:
                self.assertEqual(len(exchanges), 1, "their file left its place although a look would have told")
            self.assertEqual(bench.litter(), {})
            seen.add(came_last)
            seen.add(f"{len(exchanges)} exchanges")

        for change in (self.ADD, self.ADD_LINKED):
            self.for_every_moment(change, "rename", check)
        # Unless all of these happened, the moments were not the ones that matter. Four exchanges: their file took the
        # place of ours while that was being looked at, and is put back as the newest.
        self.assertEqual(seen, {True, False, "1 exchanges", "3 exchanges", "4 exchanges"})

    def test_a_file_that_was_renamed_into_place_is_not_removed(self):
        def check(bench, plan):
            _, answer = bench.run(plan)
            self.assertIn(answer, ("ok", "failed: The event has another title."))
            self.assertEqual(bench.items(), {"a.ics": self.their_text()} if bench.real_file().exists() else {})
            if answer != "ok":
                self.assertTrue(bench.real_file().exists())
            self.assertEqual(bench.litter(), {})

        # A linked file that comes back after its link went is nobody's item.
        self.for_every_moment(self.REMOVE, "rename", check)
        with Bench(self.REMOVE) as bench:
            undisturbed, _ = bench.run()
        rename = next(call for call in undisturbed.calls if call.name == "rename")
        with Bench(self.REMOVE) as bench:
            (bench.root / "theirs").write_bytes(self.their_text().encode())
            _, answer = bench.run(f"{rename.number}:rename-before={bench.root / 'theirs'}")
            self.assertEqual(answer, "failed: The event has another title.")
            self.assertEqual(bench.items(), {"a.ics": self.their_text()})

    def test_what_was_written_in_place_before_the_exchange_is_kept(self):
        def check(bench, plan):
            outcome, answer = bench.run(plan)
            self.assertEqual(answer, "ok")
            text = bench.items()["a.ics"]
            exchanges = [call.number for call in outcome.calls if call.name == "exchange"]
            number = int(plan.split(":")[0])
            if number <= exchanges[0]:
                self.assertIn(THEIRS, text)

        self.for_every_moment(self.ADD, "write", check)

    def test_a_removed_file_stays_removed(self):
        def check(bench, plan):
            _, answer = bench.run(plan)
            self.assertIn(answer, ("ok", "failed: No such file or directory"))
            self.assertEqual(bench.items(), {})
            self.assertEqual(bench.litter(), {})

        for change in (self.ADD, self.REMOVE):
            self.for_every_moment(change, "remove", check)

    def test_a_crash_on_top_destroys_nothing(self):
        """Their text is in place, or at worst (killed between exchanging and exchanging back) beside it."""
        windows = set()

        def crashes(calls, call):
            return (f"{number}:{crash}" for number in range(call.number, len(calls) + 8) for crash in faults.CRASHES)

        def check(bench, plan):
            outcome, _ = bench.run(plan)
            text = bench.items().get("a.ics", "")
            ours, both = with_line(OLD, OURS), with_line(self.their_text(), OURS)
            if outcome.was_killed and not (bench.root / "theirs").exists() and THEIRS not in text:
                self.assertIn(self.their_text(), bench.litter().values())
                windows.add(outcome.calls[-1].name)
            if text:
                self.assertIn(text, (OLD, ours, self.their_text(), both))

        for change in (self.ADD, self.REMOVE):
            self.for_every_moment(change, "rename", check, crashes)
        self.assertEqual(windows, {"exchange", "rename"})

    def test_failures_on_top_destroy_nothing(self):
        def failures(calls, call):
            return (f"{number}:EIO" for number in range(call.number, len(calls) + 8))

        def check(bench, plan):
            _, answer = bench.run(plan)
            self.assertFalse((bench.root / "theirs").exists())
            items = bench.items()
            if answer == "ok" and bench.change is self.REMOVE:
                self.assertIn(items, ({}, {"a.ics": self.their_text()}))
            else:
                self.assertIn(THEIRS, items["a.ics"])

        for change in (self.ADD, self.REMOVE):
            self.for_every_moment(change, "rename", check, failures)


if __name__ == "__main__":
    TOOL, LIBRARY = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
