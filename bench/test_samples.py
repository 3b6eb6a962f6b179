#!/usr/bin/python3
"""Shows which samples have a figure, what is run again, and that no number is told of what is not steady."""
import itertools
import unittest
from unittest import mock

from page import UNSTEADY, all_met, target_row, usage_fields
from runs import Job, Usage
from samples import Sample, due_again, take_turns, times


def setUpModule():
    touching = mock.patch("runs.touch_memory")
    touching.start()
    unittest.addModuleCleanup(touching.stop)


class Figures(unittest.TestCase):
    def test_three_smallest_agree(self):
        self.assertEqual(Sample(1.3, 1.0, 1.04, 9.0, 1.02).figure(), 1.0)
        self.assertEqual(Sample(100, 105, 105).figure(), 100)
        self.assertEqual(Sample(*9 * [0.2]).figure(), 0.2)

    def test_they_do_not(self):
        for values in ((100, 105, 106), (1.0, 1.0, 2.0), (0.5, *8 * [1.0]), range(10, 19), (1.0, 1.06, 1.06, 1.06)):
            self.assertIsNone(Sample(*values).figure(), values)

    def test_too_few_or_none(self):
        for values in ((), (1.0,), (1.0, 1.0), (0.0, 0.0, 0.0), (0.0, 1.0, 1.0, 1.0)):
            self.assertIsNone(Sample(*values).figure(), values)

    def test_times(self):
        steady, other, bad = Sample(6, 6.1, 6.2), Sample(2, 2, 2), Sample(1, 2, 3)
        self.assertEqual(times(steady, other), 3)
        for pair in ((steady, bad), (bad, steady), (bad, bad)):
            self.assertIsNone(times(*pair))


def job(title, *seconds):
    """A job whose runs take so long, again and again the same."""
    taken = itertools.cycle(seconds)
    return Job(title, lambda: Usage(next(taken), 1, 0))


def runs_of(jobs, comparisons, turns, most):
    take_turns(jobs, comparisons, turns, most, lambda turn: None)
    return [len(each.seconds.values) for each in jobs]


class Turns(unittest.TestCase):
    def test_steady_jobs_take_their_turns(self):
        self.assertEqual(runs_of([job("a", 1.0), job("b", 1.0, 1.01, 1.02)], [], 4, 12), [4, 4])

    def test_in_turn(self):
        order = []
        jobs = [Job(name, lambda name=name: order.append(name) or Usage(1.0, 1, 0)) for name in "abc"]
        runs_of(jobs, [], 2, 2)
        self.assertEqual("".join(order), "abcabc")

    def test_what_is_compared_runs_again_together(self):
        # Of "late" the third quick run is the fifth; "base" and "both" run on with it, "else" does not.
        late, base, both, other = job("late", 1.0, 2.0, 1.0, 2.0, 1.0, 1.0), *(job(name, 1.0) for name in "xyz")
        jobs = [late, base, both, other]
        self.assertEqual(runs_of(jobs, [(late, base), (late, both), (other, other)], 3, 9), [5, 5, 5, 3])

    def test_only_pairs_with_an_unsteady_job(self):
        bad, base, good = job("bad", *range(1, 40)), job("base", 1.0), job("good", 1.0)
        for each in (bad, base, good):
            each.seconds.values += [each.run().seconds for _ in range(3)]
        self.assertEqual(due_again([good, base, bad], [(bad, base), (good, base)]), [base, bad])

    def test_an_end(self):
        self.assertEqual(runs_of([job("never", *(1.5 ** n for n in range(30))), job("good", 1.0)], [], 3, 9), [9, 3])
        # None of 1, 2, 4 ... agree; where runs come to be quick again the figure is of these.
        slow = job("slow", 4.0, 8.0, 2.0, 1.0, 1.0, 1.01)
        self.assertEqual(runs_of([slow], [], 3, 9), [6])
        self.assertEqual(slow.seconds.figure(), 1.0)

    def test_an_uncounted_run_tells_of_memory_alone(self):
        each = Job("each", lambda: Usage(1.0, 123, 0), 1000)
        each.take(is_counted=False)
        self.assertEqual((each.seconds.values, each.kilobytes), ([], 123))
        with mock.patch("runs.touch_memory") as touched:
            each.take()
        touched.assert_called_once_with(123 * 1024 + 1000)
        self.assertEqual(each.seconds.values, [1.0])


class Page(unittest.TestCase):
    def test_verdicts(self):
        for value, bound, limit, verdict in ((3.0, "at most", 3.0, "met"), (3.01, "at most", 3.0, "missed"),
                                             (6.0, "at least", 6.0, "met"), (5.9, "at least", 6.0, "missed"),
                                             (1.0, "more than", 1.0, "missed"), (1.1, "more than", 1.0, "met")):
            self.assertEqual(target_row("a", value, bound, limit)[3], verdict)

    def test_no_number_of_an_unsteady_sample(self):
        row = target_row("a", None, "at most", 3.0, "why")
        self.assertEqual(row, ("a", UNSTEADY, "at most 3", "not judged", "why"))
        bad = job("bad", 1.0, 2.0, 3.0)
        runs_of([bad], [], 3, 3)
        self.assertEqual(usage_fields(bad)[0], UNSTEADY)

    def test_strict(self):
        met, missed, unsteady = (target_row("a", value, "at most", 1.0) for value in (1.0, 2.0, None))
        self.assertTrue(all_met([met, met]))
        self.assertFalse(all_met([met, missed]))
        self.assertFalse(all_met([met, unsteady]))


if __name__ == "__main__":
    unittest.main()
