"""The process from its start to its end: the order of both, the watchdog, and the menu language."""

LOCALE = '"./root/usr/apps/portmeld/res/locale"'
I18N = f'appcore_set_i18n("portmeld", {LOCALE})'

START = [
    I18N,
    f'bindtextdomain("portmeld", {LOCALE})',
    'vconf_notify_key_changed("db/menu_widget/language")',
    "usb_device_init()",
    'init_notification_data_manager("portmeld", 0)',
    "register_notification_button_callback()",
    "register_notification_timeout_callback()",
    "register_notofication_hide_callback()",
    "g_timeout_add(30000)",
    "device_power_subscribe_wakeup()",
    "device_power_subscribe_poweroff()",
    "device_power_subscribe_state_changed()",
    'vconf_notify_key_changed("db/menu/support/use_mode")',
    'vconf_notify_key_changed("memory/portmeld/removed_dlna_device")',
    "smart_deadlock_register_watchdog_service(60)",
    "g_timeout_add(5000)",
]

END = [
    "usb_device_fini()",
    "usb_unset_connected_cb()",
    "close_notification_data_manager()",
    "device_power_unsubscribe_wakeup()",
    "device_power_unsubscribe_poweroff()",
    "device_power_unsubscribe_state_changed()",
    'vconf_ignore_key_changed("db/menu_widget/language")',
]


def in_order(lines, expected):
    """Those of the lines that are expected, in the order of the lines."""
    return [line for line in lines if line in expected]


def test_the_platform_is_called_in_its_order_at_the_start(new_daemon):
    assert new_daemon.new_calls() == START


def test_manager_watchdog_and_bus_service_are_made_in_this_order(new_daemon):
    log = new_daemon.log()
    expected = [
        "I m_RegisterRemovedDLNADeviceNameCallback added : 0",
        "I ConfigFilePath:./root/usr/bin/portmeld.interface.xml",
        "I load portmeld.interface.xml ok.",
        "I init_introspection_xml ok.",
        "I m_pIntrospectionData path:/com/norvane/portmeld",
        "I SetDeviceEventCallback",
        "I szName:com.norvane.portmeld",
        "I m_pIntrospectionData path:/com/norvane/portmeld",
        "I com.norvane.portmeld NameAcquired.",
    ]
    assert in_order(log, expected) == expected
    assert log[0].startswith("I argc:1,argv:0x")


def test_the_arguments_are_only_logged(start_daemon):
    daemon = start_daemon(arguments=["--help", "%s"])
    daemon.wait_for_name()
    assert daemon.log()[0].startswith("I argc:3,argv:0x")
    assert daemon.new_calls() == START


def test_an_orderly_end_undoes_the_start_bus_service_first(new_daemon):
    new_daemon.new_calls()
    end = new_daemon.quit()
    assert end.status == 0
    assert end.calls == END
    expected = [
        "I CMMDeviceClientMgr: m_pRequester.size:0",
        "I Destroy: CMMUsbStorage start....",
        "I Destroy: finish....",
    ]
    said = [line.replace("~", "") for line in new_daemon.error_lines()]
    assert in_order(said, expected) == expected


def test_the_end_of_a_working_daemon_gives_back_everything(daemon, client):
    daemon.plug()
    daemon.plug_camera()
    client.call("Connect", "player", 7)
    client.call("SetPhotoBGMPlayList", "a", "b", "c")
    client.send("SwitchToContent")
    client.round_trip()
    daemon.new_calls()
    end = daemon.quit()
    assert (end.status, end.breaches) == (0, [])
    after_notifications = END.index("close_notification_data_manager()") + 1
    assert end.calls == [
        *END[:after_notifications],
        "app_control_destroy()",
        *END[after_notifications:],
    ]


def test_an_end_during_the_start_is_orderly(start_daemon):
    end = start_daemon().quit()
    assert (end.status, end.breaches) == (0, [])


def test_the_watchdog_is_fed_every_5_seconds(new_daemon):
    assert new_daemon.order("watchdog") == {"period": 60, "feeds": 0}
    new_daemon.advance(4)
    assert new_daemon.order("watchdog")["feeds"] == 0
    new_daemon.advance(1)
    assert new_daemon.order("watchdog")["feeds"] == 1
    new_daemon.advance(295)
    assert new_daemon.order("watchdog") == {"period": 60, "feeds": 60}


def test_a_new_menu_language_binds_the_catalogue_each_time(new_daemon):
    new_daemon.new_calls()
    for language in ("fr_FR.utf8", "ko_KR.utf8", "ko_KR.utf8"):
        new_daemon.set("db/menu_widget/language", "text", language)
        assert new_daemon.new_calls() == [
            "vconf_keynode_get_name()",
            "vconf_keynode_get_str()",
            I18N,
        ]
        assert f"D vconf key value : [{language}]" in new_daemon.log()


def test_another_setting_binds_nothing(new_daemon):
    new_daemon.new_calls()
    new_daemon.set("db/menu_widget/languages", "text", "fr_FR.utf8")
    new_daemon.set("memory/portmeld/removed_dlna_device", "text", "Server")
    assert I18N not in new_daemon.new_calls()


def test_usb_events_are_taken_30_seconds_after_the_start(new_daemon):
    new_daemon.advance(29)
    new_daemon.plug(product="Early")
    assert new_daemon.popup() is None
    assert "usb_set_connected_cb()" not in new_daemon.new_calls()
    new_daemon.advance(1)
    assert "usb_set_connected_cb()" in new_daemon.new_calls()
    new_daemon.plug(product="Late")
    assert new_daemon.popup()["type"] == 1
