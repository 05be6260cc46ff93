"""The check of the floors, on small houses: each rule with what it accepts and what it refuses."""

import floors
import pytest

# One header or source on every floor, to be included by what a test adds.
HOUSE = {
    "src/main.cpp": "",
    "src/util/MMDeviceInfo.h": "",
    "src/commoncontrol/MMDeviceMgr.h": "",
    "platform/include/platform/usb.h": "",
    "platform/include/platform/log.h": "",
    "platform/common/Walker.h": "",
    "platform/simulated/SimulatedTv.h": "",
    "platform/simulated/Ports.h": "",
    "platform/linux/UdevPorts.h": "",
    "workbench/Screen.h": "",
    "ctl/Table.h": "",
    "tests/unit/Fixture.h": "",
}


def wrong(tree, file, text):
    """What the check finds in the house with one file more."""
    return floors.judge(tree({**HOUSE, file: text}))[1]


@pytest.mark.parametrize(
    "file, include",
    [
        ("src/main.cpp", '"MMDeviceMgr.h"'),
        ("src/main.cpp", '"commoncontrol/MMDeviceMgr.h"'),
        ("src/main.cpp", '"MMDeviceInfo.h"'),
        ("src/main.cpp", "<platform/log.h>"),
        ("src/util/A.cpp", '"MMDeviceInfo.h"'),
        ("src/util/A.cpp", "<platform/usb.h>"),
        ("src/util/A.cpp", '"platform/usb.h"'),
        ("src/commoncontrol/A.cpp", '"MMDeviceInfo.h"'),
        ("src/commoncontrol/A.cpp", '"../util/MMDeviceInfo.h"'),
        ("src/commoncontrol/A.cpp", '"MMDeviceMgr.h"'),
        ("src/commoncontrol/A.cpp", "<platform/usb.h>"),
        ("platform/include/platform/a.h", '"usb.h"'),
        ("platform/include/platform/a.h", "<platform/usb.h>"),
        ("platform/common/A.cpp", '"Walker.h"'),
        ("platform/common/A.cpp", "<platform/usb.h>"),
        ("platform/simulated/A.cpp", '"Ports.h"'),
        ("platform/simulated/A.cpp", '"Walker.h"'),
        ("platform/simulated/A.cpp", "<platform/usb.h>"),
        ("platform/linux/A.cpp", '"UdevPorts.h"'),
        ("platform/linux/A.cpp", '"../common/Walker.h"'),
        ("platform/linux/A.cpp", "<platform/usb.h>"),
        ("workbench/A.cpp", '"SimulatedTv.h"'),
        ("workbench/A.cpp", '"Screen.h"'),
        ("ctl/A.cpp", '"Table.h"'),
        ("ctl/A.cpp", "<gio/gio.h>"),
        ("src/util/A.cpp", "<vector>"),
    ],
)
def test_an_include_on_its_own_floor_is_accepted(tree, file, include):
    assert wrong(tree, file, f"#include {include}\n") == []


@pytest.mark.parametrize(
    "file, include",
    [
        ("src/main.cpp", '"SimulatedTv.h"'),
        ("src/main.cpp", '"Walker.h"'),
        ("src/util/A.cpp", '"MMDeviceMgr.h"'),
        ("src/util/A.cpp", '"../commoncontrol/MMDeviceMgr.h"'),
        ("src/util/A.cpp", '"Walker.h"'),
        ("src/util/A.cpp", '"SimulatedTv.h"'),
        ("src/commoncontrol/A.cpp", '"SimulatedTv.h"'),
        ("src/commoncontrol/A.cpp", '"../../platform/linux/UdevPorts.h"'),
        ("src/commoncontrol/A.cpp", '"../../workbench/Screen.h"'),
        ("platform/include/platform/a.h", '"MMDeviceInfo.h"'),
        ("platform/include/platform/a.h", '"Walker.h"'),
        ("platform/common/A.cpp", '"SimulatedTv.h"'),
        ("platform/common/A.cpp", '"MMDeviceInfo.h"'),
        ("platform/simulated/A.cpp", '"MMDeviceMgr.h"'),
        ("platform/simulated/A.cpp", '"../linux/UdevPorts.h"'),
        ("platform/linux/A.cpp", '"SimulatedTv.h"'),
        ("platform/linux/A.cpp", '"MMDeviceInfo.h"'),
        ("workbench/A.cpp", '"Ports.h"'),
        ("workbench/A.cpp", '"MMDeviceMgr.h"'),
        ("workbench/A.cpp", "<platform/usb.h>"),
        ("workbench/A.cpp", '"Walker.h"'),
        ("ctl/A.cpp", '"MMDeviceInfo.h"'),
        ("ctl/A.cpp", "<platform/usb.h>"),
        ("ctl/A.cpp", '"SimulatedTv.h"'),
        ("src/util/A.cpp", '"../../tests/unit/Fixture.h"'),
    ],
)
def test_an_include_that_crosses_a_floor_is_refused(tree, file, include):
    found = wrong(tree, file, f"\n#include {include}\n")
    assert len(found) == 1
    assert found[0].startswith(f"{file}:2: ")
    assert "may not include" in found[0]


def test_angle_brackets_hide_no_project_file(tree):
    found = wrong(tree, "src/util/A.cpp", "#include <MMDeviceMgr.h>\n")
    assert found == [
        "src/util/A.cpp:1: src/commoncontrol/MMDeviceMgr.h stands on a floor that this file may not"
        " include"
    ]


def test_a_quoted_name_that_is_no_project_file_is_refused(tree):
    assert wrong(tree, "src/util/A.cpp", '#include "gone.h"\n') == [
        'src/util/A.cpp:1: "gone.h" is no file of the project'
    ]


def test_an_unknown_header_of_the_contract_is_refused(tree):
    assert wrong(tree, "src/util/A.cpp", "#include <platform/gone.h>\n") == [
        "src/util/A.cpp:1: <platform/gone.h> is no header of the contract"
    ]


def test_a_name_that_two_folders_hold_is_refused(tree):
    house = {**HOUSE, "src/util/Ports.h": "", "src/commoncontrol/A.cpp": '#include "Ports.h"\n'}
    assert floors.judge(tree(house))[1] == [
        'src/commoncontrol/A.cpp:1: "Ports.h" can mean src/util/Ports.h or'
        " platform/simulated/Ports.h"
    ]


def test_a_quoted_name_means_the_file_beside_before_any_other(tree):
    house = {**HOUSE, "src/util/Ports.h": "", "platform/simulated/A.cpp": '#include "Ports.h"\n'}
    assert floors.judge(tree(house))[1] == []


@pytest.mark.parametrize("directive", ["#include NAME", "#include NAME(usb)"])
def test_an_include_by_macro_is_refused(tree, directive):
    found = wrong(tree, "src/util/A.cpp", directive + "\n")
    assert found == ["src/util/A.cpp:1: an include whose name is a macro cannot be judged"]


@pytest.mark.parametrize(
    "text",
    [
        '  #  include   "MMDeviceMgr.h"  // why\n',
        '#include \\\n"MMDeviceMgr.h"\n',
        '#include_next "MMDeviceMgr.h"\n',
        '#import "MMDeviceMgr.h"\n',
        '/* a comment */\n#include "MMDeviceMgr.h"\n',
        'const char* quote = "/*";\n#include "MMDeviceMgr.h"\n/* end */\n',
    ],
)
def test_an_include_is_seen_however_it_is_written(tree, text):
    assert len(wrong(tree, "src/util/A.cpp", text)) == 1


@pytest.mark.parametrize(
    "text",
    [
        '// #include "MMDeviceMgr.h"\n',
        '/*\n#include "MMDeviceMgr.h"\n*/\n',
        'const char* text = R"(\n#include "MMDeviceMgr.h"\n)";\n',
    ],
)
def test_what_only_looks_like_an_include_is_none(tree, text):
    assert wrong(tree, "src/util/A.cpp", text) == []


@pytest.mark.parametrize("file", ["src/A.cpp", "platform/A.h", "platform/moon/A.cpp", "tools/A.c"])
def test_a_file_on_no_floor_is_refused(tree, file):
    assert wrong(tree, file, "") == [f"{file}: stands on no floor of the house"]


@pytest.mark.parametrize("file", ["tests/unit/A.cpp", "bench/A.cpp", "build/release/A.cpp"])
def test_tests_and_benchmarks_may_include_anything(tree, file):
    assert wrong(tree, file, '#include "../../src/util/MMDeviceInfo.h"\n') == []


def test_a_house_without_sources_is_refused(tree):
    assert floors.judge(tree({"README.md": ""}))[1] == ["there is no source to judge"]


def test_the_exit_status_tells_the_outcome(tree, capsys):
    assert floors.main([str(tree(HOUSE))]) == 0
    assert "11 files" in capsys.readouterr().out
    assert floors.main([str(tree({"ctl/B.cpp": '#include "SimulatedTv.h"\n'}))]) == 1
