"""A desktop portal for python-dbusmock whose desktop prefers light windows."""

BUS_NAME = "org.freedesktop.portal.Desktop"
MAIN_OBJ = "/org/freedesktop/portal/desktop"
MAIN_IFACE = "org.freedesktop.portal.Settings"
SYSTEM_BUS = False

ANSWER = "ret = {'org.freedesktop.appearance': dbus.Dictionary({'color-scheme': dbus.UInt32(2)}, signature='sv')}"


def load(mock, parameters):
    mock.AddMethod(MAIN_IFACE, "ReadAll", "as", "a{sa{sv}}", ANSWER)
