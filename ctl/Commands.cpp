// What help tells of every command. Facts that matter before a command is run stand here; the whole story
// is in portmeldctl(1).
#include "Commands.h"

namespace ctl {

const std::vector<Command>& commands() {
    static const std::vector<Command> ALL = {
        {"list",
         "",
         "Show the devices that are plugged in, the newest first",
         "Sizes are in units of 1024: 1K is 1024 bytes. ext4 stands for ext2 and ext3 as well.",
         0,
         0,
         {true, false, false},
         list},
        {"count",
         "",
         "Show how many devices the daemon counts",
         "A disk whose file system is unknown is not counted, and after a standby the daemon "
         "counts\n"
         "devices twice: \"list\" shows what is there.",
         0,
         0,
         {true, true, false},
         count},
        {"watch",
         "",
         "Show the devices, and then each that comes, changes or goes, until interrupted",
         "The daemon tells of removals at once, and of new devices only when asked.",
         0,
         0,
         {false, false, true},
         watch},
        {"popups",
         "on|off",
         "Switch the pop-ups of new devices on or off, for the whole television",
         "The television switches them as well: on 30 seconds after the daemon's start and 60 "
         "seconds\n"
         "after it woke, off when it is switched off.",
         1,
         1,
         {},
         popups},
        {"music add",
         "URL [TITLE [ARTIST]]",
         "Add an item to the end of the photo player's music list",
         "The daemon keeps the three texts as they are, for all clients, until it ends.",
         1,
         3,
         {},
         musicAdd},
        {"music get",
         "N",
         "Show item N of the photo player's music list; the first is 0",
         "Asking for an item that is not there ENDS THE DAEMON, and with it the list, the "
         "registered\n"
         "clients and whatever else it knew. There is no way to ask how many items there are: ask "
         "only\n"
         "for items that you know were added. Negative numbers are refused here.",
         1,
         1,
         {},
         musicGet},
        {"music clear", "", "Empty the photo player's music list", "", 0, 0, {}, musicClear},
        {"setting get",
         "KEY",
         "Show the value of a setting",
         "A key is db/NAME or memory/NAME; portmeld-settings(5) lists them. Fails when it is not "
         "set.",
         1,
         1,
         {},
         settingGet},
        {"setting set",
         "KEY VALUE",
         "Change a setting; the daemon takes it up at once",
         "A key is db/NAME or memory/NAME; portmeld-settings(5) lists them.",
         2,
         2,
         {},
         settingSet},
        {"setting watch",
         "KEY",
         "Show the value of a setting, and each new one, until interrupted",
         "A key is db/NAME or memory/NAME; portmeld-settings(5) lists them.",
         1,
         1,
         {},
         settingWatch},
    };
    return ALL;
}

}  // namespace ctl
