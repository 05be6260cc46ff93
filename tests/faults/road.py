"""A plug, from the port to the removal, step by step, with something that happens to somebody at one step.

At each step the test knows what ought to come, and waits for just that; what ought not to come must not have
come by the end.
"""

from stick import NAME, TITLE

BEFORE = "before the plug"
PLUGGED = "after the uevent"
MOUNTED = "after the mount"
SEARCHED = "while the scan runs"
SHOWN = "while the pop-up stands"
PRESSED = "when the button is pressed"
LAUNCHED = "while the application starts"
PULLED = "at the removal"
STEPS = (BEFORE, PLUGGED, MOUNTED, SEARCHED, SHOWN, PRESSED, LAUNCHED, PULLED)

# What comes of a plug, for the viewer (all but the last) and for the clients of the daemon.
BROWSE = "browse"
PLAY = "play"
LAUNCH = "launch"
NOTICE = "notice"
SIGNAL = "signal"
GOODS = (BROWSE, PLAY, LAUNCH, NOTICE, SIGNAL)


def is_question(button):
    """Makes a test: whether a call shows a pop-up with this first button."""
    return lambda call: call.get("call") == "Notify" and call["actions"][1:2] == [button]


def is_notice(call):
    """Whether a call shows that the stick was removed."""
    return call.get("call") == "Notify" and (call["title"], call["actions"]) == (TITLE, [])


class Road:
    """One plug. At the step `when`, `happens()` is called; what is in `lost` is not waited for. `hears` tells
    whether the daemon hears of the button, and `first` whether it does so before what happens at PRESSED."""

    def __init__(self, world, when=None, happens=None, lost=(), hears=True, first=False):
        self._world = world
        self._when = when
        self._happens = happens
        self._lost = lost
        self._hears = hears
        self._first = first

    def go(self):
        """From the plug to the removal."""
        world = self._world
        world.popup = None
        self._at(BEFORE)
        world.plug()
        self._at(PLUGGED)
        self._order_screen("hold")
        point = world.mount()
        self._take_question(BROWSE, "Browse")
        self._at(MOUNTED)
        self._order_screen("answer")
        if PLAY not in self._lost or self._when in STEPS[STEPS.index(SEARCHED) :]:
            world.stick.wait_until_searched()
        self._at(SEARCHED)
        world.stick.open_gate()
        self._take_question(PLAY, "Play")
        self._at(SHOWN)
        self._press()
        if LAUNCH not in self._lost:
            world.take_launch()
        self._at(LAUNCHED)
        self._order_screen("hold")
        world.machine.unplug(NAME)
        if NOTICE not in self._lost:
            world.take_notice()
        if SIGNAL not in self._lost:
            world.take_signal()
        self._at(PULLED)
        self._order_screen("answer")
        if point is not None:
            world.stick.unmount(world.mounts, point)

    def _at(self, step):
        if step == self._when:
            self._happens()

    def _take_question(self, good, button):
        if good not in self._lost:
            self._world.popup = self._world.screen.take(is_question(button))
            self._world.seen.append(good)

    def _order_screen(self, *words):
        if "screen" not in self._world.ill:
            self._world.screen.order(*words)

    def _press(self):
        """The viewer presses the first button of what he sees."""
        if not self._first:
            self._at(PRESSED)
        before = len(self._world.lines())
        self._world.press()
        if self._hears and self._world.journal is None:
            self._world.wait_for_line("clicked first button.", before)
        if self._first:
            self._at(PRESSED)
