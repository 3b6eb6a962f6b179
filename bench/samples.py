"""Which figure several times of one job give, and how many turns it takes.

Other work on a machine only adds to a time, so the smallest is quoted. Alone it may be luck, or a fault: a sample is
steady, and has a figure, when its three smallest values lie within 5 percent of the smallest. What is not steady has
none: it is run again, together with what it is held against, and in the end told as unsteady, without a number."""

AGREEING = 3
SPREAD = 0.05


class Sample:
    def __init__(self, *values):
        self.values = list(values)

    def is_steady(self):
        least = sorted(self.values)[:AGREEING]
        return len(least) == AGREEING and 0 < least[0] and least[-1] <= least[0] * (1 + SPREAD)

    def figure(self):
        """The smallest value; None of a sample that is not steady."""
        return min(self.values) if self.is_steady() else None


def times(sample, other):
    """How many times the other's figure the sample's is; None when either has none."""
    return sample.figure() / other.figure() if sample.is_steady() and other.is_steady() else None


def due_again(jobs, comparisons):
    """The jobs that are not steady and all that these are held against, in the order of jobs. A comparison is a
    collection of jobs."""
    unsteady = {job for job in jobs if not job.seconds.is_steady()}
    again = unsteady.union(*(set(comparison) for comparison in comparisons if unsteady.intersection(comparison)))
    return [job for job in jobs if job in again]


def take_turns(jobs, comparisons, turns, most, tell):
    """Takes every job once a turn, then those that are due again, until none is or there were the most turns."""
    for turn in range(most):
        due = jobs if turn < turns else due_again(jobs, comparisons)
        if not due:
            return
        tell(f"turn {turn + 1}" + (f" of {turns}" if turn < turns else f": {len(due)} jobs that are not steady"))
        for job in due:
            job.take()
