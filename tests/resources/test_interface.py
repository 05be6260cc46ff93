"""The description of the bus interface: its members and types, and that all of it is documented."""
import functools
import re
import xml.etree.ElementTree as ElementTree

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio  # noqa: E402 (the version comes first)

from resource_files import built, run, source  # noqa: E402

INTERFACE_FILE = "portmeld.interface.xml"
OBJECT_PATH = "/com/norvane/portmeld"
INTERFACE = "com.norvane.portmeld"

# Method: (types of its arguments, types of its reply).
METHODS = {
    "Connect": ("si", "i"),
    "GetDeviceInfo": ("is", ""),
    "GetDeviceCount": ("ii", "i"),
    "DisConnect": ("i", ""),
    "RequesAll": ("i", ""),
    "SetEnablePopUP": ("b", ""),
    "GetDeviceListByFsType": ("ii", ""),
    "LaunchPopup": ("s", ""),
    "SwitchToContent": ("", ""),
    "SetPhotoBGMPlayList": ("sss", ""),
    "GetPhotoBGMPlayListItem": ("i", "sss"),
    "ClearPhotoBGMPlayList": ("", ""),
}
SIGNALS = {"mm_device_action": "s", "mm_device_get_list": "s"}
NEVER_ANSWERED = ["GetDeviceInfo", "LaunchPopup", "SwitchToContent"]

JSON_MEMBERS = [
    "Action", "Class", "SubClass", "Protocol", "VendorId", "Bus", "Address", "Number", "TotalSize",
    "UsedSize", "Manufacturer", "Product", "DeviceName", "DevicePath", "Mountpath", "FileSystem",
    "Serial", "DisplayName", "DeviceKey",
]  # fmt: skip


def node():
    return Gio.DBusNodeInfo.new_for_xml(source(INTERFACE_FILE).read_text(encoding="utf-8"))


def interface():
    return node().lookup_interface(INTERFACE)


def signature(arguments):
    return "".join(argument.signature for argument in arguments)


@functools.lru_cache(maxsize=None)
def reference(folder_of_documents):
    """Member: (its text, {argument: its text}), from the document made of the comments."""
    made = run(
        "gdbus-codegen", "--generate-docbook", "doc",
        "--output-directory", folder_of_documents, source(INTERFACE_FILE),
    )  # fmt: skip
    assert made.returncode == 0, made.stderr
    document = ElementTree.parse(folder_of_documents / f"doc-{INTERFACE}.xml").getroot()

    def words(element):
        return " ".join("".join(element.itertext()).split())

    members = {}
    for section in document.iter("refsect2"):
        member = re.fullmatch(r'The "?(\w+)(?:\(\) method|" signal)', section.find("title").text)[1]
        arguments = {
            item.find(".//parameter").text: words(item.find("listitem"))
            for item in section.iter("varlistentry")
        }
        members[member] = (" ".join(words(para) for para in section.findall("para")), arguments)
    (description,) = [part for part in document.iter("refsect1") if part.get("role") == "desc"]
    members[INTERFACE] = (" ".join(words(para) for para in description.findall("para")), {})
    return members


def test_the_description_is_built_unchanged():
    assert built(INTERFACE_FILE).read_bytes() == source(INTERFACE_FILE).read_bytes()


def test_the_root_node_carries_the_object_path():
    assert node().path == OBJECT_PATH


def test_the_first_and_only_interface_is_the_daemons():
    assert [found.name for found in node().interfaces] == [INTERFACE]
    assert not node().nodes and not interface().properties


def test_the_interface_has_exactly_the_twelve_methods_with_their_types():
    found = {
        method.name: (signature(method.in_args), signature(method.out_args))
        for method in interface().methods
    }
    assert found == METHODS
    assert len(interface().methods) == len(METHODS) == 12


def test_the_interface_has_exactly_the_two_signals_with_their_types():
    assert {signal.name: signature(signal.args) for signal in interface().signals} == SIGNALS
    assert len(interface().signals) == len(SIGNALS)


def test_every_argument_has_a_name_of_its_own():
    for method in interface().methods:
        for arguments in (method.in_args, method.out_args):
            names = [argument.name for argument in arguments]
            assert all(names) and len(set(names)) == len(names), method.name
    for signal in interface().signals:
        assert all(argument.name for argument in signal.args), signal.name


def test_no_annotation_changes_what_callers_see():
    assert not interface().annotations
    for member in [*interface().methods, *interface().signals]:
        assert not member.annotations, member.name


def test_every_member_is_documented(tmp_path):
    documented = reference(tmp_path)
    assert set(documented) == {INTERFACE, *METHODS, *SIGNALS}
    for member, (text, _) in documented.items():
        assert len(text.split()) >= 10, f"{member}: {text!r}"


def test_every_argument_is_documented(tmp_path):
    documented = reference(tmp_path)
    for method in interface().methods:
        names = {argument.name for argument in [*method.in_args, *method.out_args]}
        assert set(documented[method.name][1]) == names, method.name
    for signal in interface().signals:
        assert set(documented[signal.name][1]) == {arg.name for arg in signal.args}, signal.name
    for member, (_, arguments) in documented.items():
        for name, text in arguments.items():
            assert len(text.split()) >= 3, f"{member}, {name}: {text!r}"


def test_the_documentation_says_which_methods_are_never_answered(tmp_path):
    saying = [name for name, (text, _) in reference(tmp_path).items() if "Never answered" in text]
    assert sorted(saying) == sorted(NEVER_ANSWERED)


def test_the_documentation_lists_the_members_of_the_device_object_in_their_order(tmp_path):
    text, _ = reference(tmp_path)["mm_device_action"]
    table = text.partition("in the order in which they are written:")[2]
    assert re.findall(r"\b([A-Z]\w+) (?:number|text) ", table) == JSON_MEMBERS


def test_the_documentation_warns_of_what_surprises(tmp_path):
    documented = reference(tmp_path)
    assert '"VendorId" carries the product id' in documented["mm_device_action"][0]
    assert "out of range" in documented["GetPhotoBGMPlayListItem"][0]
    assert "ends the daemon" in documented["GetPhotoBGMPlayListItem"][0]
    assert "the last caller wins" in documented[INTERFACE][0]
