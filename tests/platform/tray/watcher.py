"""A watcher of status icons for python-dbusmock. It has a host unless the parameter "host" is false."""

import dbus

BUS_NAME = "org.kde.StatusNotifierWatcher"
MAIN_OBJ = "/StatusNotifierWatcher"
MAIN_IFACE = "org.kde.StatusNotifierWatcher"
SYSTEM_BUS = False


def load(mock, parameters):
    mock.AddMethods(MAIN_IFACE, [
        ("RegisterStatusNotifierItem", "s", "", ""),
        ("RegisterStatusNotifierHost", "s", "", ""),
    ])
    mock.AddProperties(MAIN_IFACE, dbus.Dictionary({
        "IsStatusNotifierHostRegistered": dbus.Boolean(parameters.get("host", True)),
        "RegisteredStatusNotifierItems": dbus.Array([], signature="s"),
        "ProtocolVersion": dbus.Int32(0),
    }, signature="sv"))
