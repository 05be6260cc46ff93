"""Plugging, mounting and pulling from the page; what the daemon lists is asked on the bus."""

import json
import urllib.parse


def products(bus_client):
    """The products that the daemon lists, newest first, as another client hears."""
    bus_client.signals()
    bus_client.call("RequesAll", 99)
    return [device["Product"] for _, device in bus_client.news()]


def test_every_sample_can_be_plugged(page):
    names = page.run("[...document.querySelectorAll('[data-sample]')].map((s) => s.dataset.sample)")
    assert len(names) == 9
    for name in names:
        before = page.count(".port")
        page.click(f"[data-sample={name}]")
        page.until(f"document.querySelectorAll('.port').length > {before}")
    assert page.count(".message *") == 0


def test_a_folder_is_found_by_walking_and_plugged_under_another_name(page, bus_client, stick):
    folder = stick("Cats")
    page.click(".segments [data-value=folder]")
    page.fill(".plug-form input[required]:visible", str(folder.parent))
    page.click(".folder:has-text('Cats')")
    page.until(f"document.querySelector('.plug-form input').value === '{folder}'")
    page.fill("role=textbox[name='Product name'] >> visible=true", "My cats")
    page.choose("role=combobox[name='File system'] >> visible=true", "exfat")
    page.click("role=button[name='Plug in']")
    page.see(".popup-title", text="My cats")
    bus_client.call("RequesAll", 99)
    [(_, device)] = bus_client.news()
    assert (device["Product"], device["Mountpath"]) == ("My cats", str(folder))
    assert device["FileSystem"] == 1


def test_a_dropped_folder_fills_the_path_in(page, stick):
    folder = stick("Dropped & odd")
    page.run(
        f"""(() => {{
          const data = new DataTransfer();
          data.setData("text/uri-list", "file://" + encodeURI({str(folder)!r}));
          document.querySelector("#ports").dispatchEvent(
            new DragEvent("drop", {{ dataTransfer: data, bubbles: true, cancelable: true }}));
        }})()"""
    )
    page.see(".plug-form .folders")
    assert page.run("document.activeElement.value") == str(folder)


def drop(page, address):
    """Drops an address on the ports; returns the path that is then filled in."""
    page.run(
        f"""(() => {{
          const data = new DataTransfer();
          data.setData("text/uri-list", {json.dumps(address)});
          document.querySelector("#ports").dispatchEvent(
            new DragEvent("drop", {{ dataTransfer: data, bubbles: true, cancelable: true }}));
        }})()"""
    )
    page.see(".plug-form .folders")
    return page.run("document.activeElement.value")


def test_a_dropped_address_keeps_what_is_no_escape(page, stick):
    assert drop(page, "file:///tmp/100%") == "/tmp/100%"
    assert drop(page, "file:///tmp/50%25 off%20%zz/%C3%A9%ff#1?") == "/tmp/50% off %zz/%C3%A9%ff#1?"
    folder = stick("50 % é#1")
    assert drop(page, "file://" + urllib.parse.quote(str(folder))) == str(folder)
    page.click("role=button[name='Plug in']")
    page.see(".port", text=folder.name)


def test_the_folder_of_a_port_is_written_out_when_pointed_at(page, stick):
    page.click(".segments [data-value=folder]")
    page.fill(".plug-form input[required]:visible", str(stick("a‮b")))
    page.click("role=button[name='Plug in']")
    page.see(".port")
    assert page.do("getAttribute", "title", selector=".port small").endswith("/a⟨202E⟩b")


def test_a_hub_of_no_number_of_sticks_is_told_and_not_plugged(watched):
    page = watched
    page.click(".segments [data-value=hub]")
    for text in ("0", "33", "1e1", "2.5", ""):
        page.fill("role=spinbutton[name='A hub with this many sticks']", text)
        page.gone(".plug-form .notice:not(:empty)")
        page.click("role=button[name='Plug the hub in']")
        page.see(".plug-form .notice", text="Sticks: a whole number from 1 to 32")
    assert "hub" not in page.run("window.orders.map(([name]) => name)")


def test_who_points_at_a_sample_presses_ok_on_the_screen_next(page):
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Play")
    assert page.focused() == "Screen of the television"
    page.press("Enter")
    page.see(".launched-name", text="Photo player")
    assert page.count(".port") == 1


def test_a_folder_that_is_not_there_is_refused_with_a_reason(page):
    page.click(".segments [data-value=folder]")
    page.fill(".plug-form input[required]:visible", "/no/such/folder")
    page.see(".folders .none")
    page.click("role=button[name='Plug in']")
    page.see(".message .bad", text="/no/such/folder")
    assert page.count(".port") == 0


def test_an_unmounted_stick_is_offered_only_when_it_is_mounted(page, bus_client, stick):
    page.click(".segments [data-value=folder]")
    page.fill(".plug-form input[required]:visible", str(stick("Later")))
    page.do("uncheck", selector="role=checkbox[name='mounted']")
    page.click("role=button[name='Plug in']")
    page.see(".port", text="not mounted")
    bus_client.round_trip()
    assert page.count(".popup") == 0
    page.click("role=button[name='Mount port 1']")
    page.see(".popup-title", text="Later")


def test_a_camera_comes_with_its_name(page, bus_client):
    page.click(".segments [data-value=camera]")
    page.fill("role=textbox[name='Product name'] >> visible=true", "EOS")
    page.click("role=button[name='Plug the camera in']")
    page.see(".port", text="EOS")
    page.see(".popup-title", text="EOS")
    assert bus_client.call("GetDeviceCount", 9, 6) == [1]
    assert products(bus_client) == ["EOS"]


def test_a_hub_brings_many_sticks_at_once(page, bus_client):
    page.click(".segments [data-value=hub]")
    page.fill("role=spinbutton[name='A hub with this many sticks']", "12")
    page.click("role=button[name='Plug the hub in']")
    page.until("document.querySelectorAll('.port').length === 12")
    page.until("document.querySelectorAll('.device').length === 12")
    assert len(products(bus_client)) == 12


def pull_and_count_results(page, button):
    """Plugs one photo, pulls it; returns how many scan results the log tells of after the pull."""
    page.stop_time()
    page.click("role=tab[name='Log']")
    page.click("[data-sample=one-photo]")
    page.see(".popup-button.chosen", text="Play")
    page.click("#panel-log >> role=button[name='Clear']")
    page.until("document.querySelector('#panel-log .stream-count').innerText === '0'")
    page.click(f"role=button[name='{button}']")
    page.see(".popup.notice")
    page.see(".plugged", text="All ports are free.")
    page.see(".log-row >> nth=0")
    page.fill("#panel-log input[type=search]", "OnScanDeviceCB")
    page.see("#panel-log .stream-count", text=" of ")
    return page.count(".log-row")


def test_a_pulled_stick_is_gone_for_the_daemon(page, bus_client):
    assert pull_and_count_results(page, "Pull port 1") == 0
    assert products(bus_client) == []


def test_a_stick_can_be_pulled_before_its_scan_has_told_anything(page, bus_client):
    assert pull_and_count_results(page, "Pull port 1 while it is read") > 0
    assert products(bus_client) == []


def test_a_device_shows_every_field_and_lights_up_what_changes(page, bus_client):
    page.click("[data-sample=mixed]")
    page.click(".device summary")
    fields = page.run(
        "Object.fromEntries([...document.querySelectorAll('.device-fields > div')]"
        ".map((field) => [field.firstChild.innerText, field.lastChild.innerText]))"
    )
    assert len(fields) == 25
    bus_client.call("RequesAll", 99)
    [(_, device)] = bus_client.news()
    assert fields["product"] == device["Product"] == "Holiday"
    assert fields["mountpath"] == device["Mountpath"]
    assert fields["totalSize"].split()[0] == str(device["TotalSize"])
    assert fields["fileSystemType"] == "3 NTFS"
    page.see(".tile.lit", text="NTFS")
