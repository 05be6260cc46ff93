"""What the daemon tells of itself, beside the reference."""


def differences(reference, state, places):
    """What differs now, as {what: (expected, found)}. `places` is where the daemon keeps each record, by its
    number; what was not known yet is entered."""
    found = {key: state[key] for key in ("fat", "exFat", "ext4", "ntfs", "cameras")}
    expected = dict(reference.counters)
    found["state"] = (state["activated"], state["kind"], state["notice"], state["noticeName"])
    expected["state"] = (
        reference.activated,
        reference.kind,
        reference.notice is not None,
        reference.notice or "",
    )
    found["cancel"], expected["cancel"] = state["cancel"], reference.text("cancel")
    found["scanned"], expected["scanned"] = state["scannedName"], reference.scanned
    found["clients"] = [(client["id"], client["sender"]) for client in state["clients"]]
    expected["clients"] = list(reference.clients.items())
    found["devices"] = [
        tuple(value for key, value in device.items() if key != "place") for device in state["devices"]
    ]
    expected["devices"] = [_fields(record) for record in reference.devices]
    if found["devices"] == expected["devices"]:
        for record, device in zip(reference.devices, state["devices"]):
            found[f"place of {record.device.key}"] = device["place"]
            expected[f"place of {record.device.key}"] = places.setdefault(record.number, device["place"])
        for name, record in (("current", reference.current), ("displayed", reference.displayed)):
            found[name] = state[name]
            expected[name] = places.get(record.number) if record else None
    return {key: (value, found[key]) for key, value in expected.items() if found[key] != value}


def _fields(record):
    """A record as the daemon tells it, without its place."""
    device = record.device
    return (
        device.key,
        device.usb_class,
        device.file_system,
        device.mountpath,
        device.ids[2],
        record.display_name,
        record.index,
        record.announced,
    )
