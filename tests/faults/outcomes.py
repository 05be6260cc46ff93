"""What ought to come of a plug when somebody fails: a cell for each peer, way to fail, and step.

EXPECTED tells what the viewer (or a client of the daemon) never gets, and what he gets late, when the peer is
well again; SAID, which lines are logged. Cells that are not here are not run; docs/reliability.md says why.
"""

import collections

from peers import KILLED, RESTARTED, STOPPED
from road import (
    BEFORE,
    BROWSE,
    GOODS,
    LAUNCH,
    LAUNCHED,
    MOUNTED,
    NOTICE,
    PLAY,
    PLUGGED,
    PRESSED,
    PULLED,
    SEARCHED,
    SHOWN,
    SIGNAL,
    STEPS,
)

Outcome = collections.namedtuple("Outcome", "lost late")

MANAGER = "user's service manager"

# What is logged, by a letter: words of the line, and whose line it is.
LINES = {
    "a": "notification save error2",
    "b": "a pop-up is lost: ",
    "c": "'org.norvane.picreel' did not take the launch request: ",
    "d": "lines that the journal did not take are missing here: ",
    "e": "the session bus is gone; notifications and launches wait for the next",
    "f": "the user's service manager did not start 'org.norvane.picreel': ",
    "g": "cannot launch 'org.norvane.picreel': the user has no service manager on his message bus",
}
# How the daemon ended, by a letter: what the service manager says of it.
ENDS = {"t": "SIGTERM", "k": "SIGKILL", "w": "SIGABRT"}

NOTHING = Outcome((), ())


def lost(*goods, late=()):
    """A cell in which this is lost, and that is late."""
    return Outcome(goods, tuple(late))


def row(*cells):
    """Cells by step: (step, ..., outcome) each."""
    return {step: outcome for *steps, outcome in cells for step in steps}


EXPECTED = {
    ("notification server", KILLED): row(
        (BEFORE, PLUGGED, lost(BROWSE, PLAY, LAUNCH, NOTICE)),
        (MOUNTED, SEARCHED, lost(PLAY, LAUNCH, NOTICE)),
        (SHOWN, lost(LAUNCH, NOTICE)),
        (PRESSED, LAUNCHED, lost(NOTICE)),
        (PULLED, NOTHING),
    ),
    ("notification server", STOPPED): row(
        (BEFORE, PLUGGED, lost(BROWSE, PLAY, LAUNCH, late=[NOTICE])),
        (MOUNTED, SEARCHED, lost(PLAY, LAUNCH, late=[NOTICE])),
        (SHOWN, lost(LAUNCH, late=[NOTICE])),
        (PRESSED, LAUNCHED, lost(late=[NOTICE])),
        (PULLED, NOTHING),
    ),
    ("notification server", RESTARTED): row(
        (BEFORE, PLUGGED, MOUNTED, SEARCHED, PRESSED, LAUNCHED, PULLED, NOTHING),
        (SHOWN, lost(LAUNCH)),
    ),
    ("UDisks2", KILLED): row(
        (BEFORE, PLUGGED, lost(BROWSE, PLAY, LAUNCH)),
        (*STEPS[2:], NOTHING),
    ),
    ("UDisks2", STOPPED): row(
        (BEFORE, PLUGGED, lost(BROWSE, PLAY, LAUNCH)),
        (*STEPS[2:], NOTHING),
    ),
    ("UDisks2", RESTARTED): row((*STEPS, NOTHING)),
    ("udevd", KILLED): row(
        (BEFORE, lost(*GOODS)),
        (PLUGGED, MOUNTED, SEARCHED, SHOWN, PRESSED, LAUNCHED, lost(late=[NOTICE, SIGNAL])),
        (PULLED, NOTHING),
    ),
    ("udevd", STOPPED): row(
        (BEFORE, lost(*GOODS)),
        (PLUGGED, MOUNTED, SEARCHED, SHOWN, PRESSED, LAUNCHED, lost(late=[NOTICE, SIGNAL])),
        (PULLED, NOTHING),
    ),
    ("udevd", RESTARTED): row((*STEPS, NOTHING)),
    (MANAGER, KILLED): row(
        (BEFORE, PLUGGED, MOUNTED, SEARCHED, SHOWN, PRESSED, lost(LAUNCH)),
        (LAUNCHED, PULLED, NOTHING),
    ),
    (MANAGER, STOPPED): row(
        (BEFORE, PLUGGED, MOUNTED, SEARCHED, SHOWN, PRESSED, lost(late=[LAUNCH])),
        (LAUNCHED, PULLED, NOTHING),
    ),
    (MANAGER, RESTARTED): row((*STEPS, NOTHING)),
    ("application", KILLED): row((*STEPS, NOTHING)),
    ("application", STOPPED): row(
        (*STEPS[:6], lost(late=[LAUNCH])),
        (LAUNCHED, PULLED, NOTHING),
    ),
    ("application", RESTARTED): row((*STEPS, NOTHING)),
    ("user's bus", KILLED): row(
        (BEFORE, PLUGGED, lost(BROWSE, PLAY, LAUNCH, NOTICE)),
        (MOUNTED, SEARCHED, lost(PLAY, LAUNCH, NOTICE)),
        (SHOWN, PRESSED, lost(LAUNCH, NOTICE)),
        (LAUNCHED, lost(NOTICE)),
        (PULLED, NOTHING),
    ),
    ("user's bus", STOPPED): row(
        (BEFORE, PLUGGED, lost(BROWSE, PLAY, LAUNCH, late=[NOTICE])),
        (MOUNTED, SEARCHED, lost(PLAY, LAUNCH, late=[NOTICE])),
        (SHOWN, PRESSED, lost(LAUNCH, late=[NOTICE])),
        (LAUNCHED, lost(late=[NOTICE])),
        (PULLED, NOTHING),
    ),
    ("user's bus", RESTARTED): row(
        (BEFORE, PLUGGED, MOUNTED, SEARCHED, LAUNCHED, PULLED, NOTHING),
        (SHOWN, PRESSED, lost(LAUNCH)),
    ),
    ("system bus", KILLED): row(
        (BEFORE, lost(SIGNAL)),
        (PLUGGED, lost(BROWSE, PLAY, LAUNCH, SIGNAL)),
        (MOUNTED, SEARCHED, lost(PLAY, LAUNCH, SIGNAL)),
        (SHOWN, PRESSED, lost(LAUNCH, SIGNAL)),
        (LAUNCHED, lost(SIGNAL)),
        (PULLED, NOTHING),
    ),
    ("system bus", STOPPED): row(
        (*STEPS[:-1], lost(late=[SIGNAL])),
        (PULLED, NOTHING),
    ),
    ("system bus", RESTARTED): row(
        (BEFORE, NOTHING),
        (PLUGGED, lost(BROWSE, PLAY, LAUNCH)),
        (MOUNTED, SEARCHED, lost(PLAY, LAUNCH)),
        (SHOWN, PRESSED, lost(LAUNCH)),
        (LAUNCHED, PULLED, NOTHING),
    ),
    ("logind", KILLED): row((*STEPS, NOTHING)),
    ("logind", STOPPED): row((*STEPS, NOTHING)),
    ("logind", RESTARTED): row((*STEPS, NOTHING)),
    ("journald", KILLED): row((*STEPS, NOTHING)),
    ("journald", STOPPED): row((*STEPS, NOTHING)),
    ("journald", RESTARTED): row((*STEPS, NOTHING)),
    **{
        ("portmeld itself", how): row(
            (BEFORE, NOTHING),
            (PLUGGED, lost(BROWSE, PLAY, LAUNCH)),
            (MOUNTED, SEARCHED, lost(PLAY, LAUNCH)),
            (SHOWN, PRESSED, lost(LAUNCH)),
            (LAUNCHED, PULLED, NOTHING),
        )
        for how in (KILLED, STOPPED, RESTARTED)
    },
}


SAID = {
    ("notification server", KILLED): row(
        (BEFORE, PLUGGED, PRESSED, LAUNCHED, "a"),
        (MOUNTED, SEARCHED, SHOWN, "ab"),
        (PULLED, "b"),
    ),
    ("notification server", RESTARTED): row((MOUNTED, SEARCHED, SHOWN, PULLED, "b")),
    (MANAGER, KILLED): row(
        (BEFORE, PLUGGED, MOUNTED, SEARCHED, SHOWN, PRESSED, "g"),
        (LAUNCHED, "f"),
    ),
    (MANAGER, RESTARTED): row((LAUNCHED, "f")),
    ("application", KILLED): row((LAUNCHED, PULLED, "c")),
    ("application", RESTARTED): row((LAUNCHED, PULLED, "c")),
    ("user's bus", KILLED): row(
        (BEFORE, PLUGGED, "ae"),
        (MOUNTED, SEARCHED, SHOWN, PRESSED, "abe"),
        (LAUNCHED, "aef"),
        (PULLED, "be"),
    ),
    ("user's bus", RESTARTED): row(
        (BEFORE, PLUGGED, "e"),
        (MOUNTED, SEARCHED, SHOWN, PRESSED, PULLED, "be"),
        (LAUNCHED, "ef"),
    ),
    ("system bus", KILLED): row((*STEPS, "t")),
    ("system bus", RESTARTED): row((*STEPS, "t")),
    ("journald", KILLED): row((*STEPS, "d")),
    ("portmeld itself", KILLED): row((*STEPS, "k")),
    ("portmeld itself", STOPPED): row((*STEPS, "w")),
    ("portmeld itself", RESTARTED): row((*STEPS, "t")),
}
