"""A watcher of status icons for python-dbusmock, which has a host."""

import dbus

BUS_NAME = "org.kde.StatusNotifierWatcher"
MAIN_OBJ = "/StatusNotifierWatcher"
MAIN_IFACE = "org.kde.StatusNotifierWatcher"
SYSTEM_BUS = False


def load(mock, _):
    mock.AddMethods(MAIN_IFACE, [
        ("RegisterStatusNotifierItem", "s", "", ""),
        ("RegisterStatusNotifierHost", "s", "", ""),
    ])
    mock.AddProperties(MAIN_IFACE, dbus.Dictionary({
        "IsStatusNotifierHostRegistered": dbus.Boolean(True),
        "RegisteredStatusNotifierItems": dbus.Array([], signature="s"),
        "ProtocolVersion": dbus.Int32(0),
    }, signature="sv"))
