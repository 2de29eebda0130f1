"""Several cases of one scenario: each is played even when another one failed."""

import host
from scenario import take_last_picture


def play_cases(around, cases):
    """`cases`: names with functions that return what was seen. Failed when one of them fails."""
    seen, failures = [], []
    for name, case in cases:
        try:
            seen.append(f"{name}: {case()}")
            host.say("  " + seen[-1])
        except (host.Failed, OSError) as error:
            failures.append(f"{name}: {error}")
            host.say("  FAILED " + failures[-1])
            take_last_picture(around.panel)
            around.end()
    if failures:
        raise host.Failed(f"{'; '.join(failures)} ({len(seen)} of {len(cases)} cases hold)")
    return "; ".join(seen)
