"""A desktop portal for python-dbusmock whose desktop prefers light windows."""

BUS_NAME = "org.freedesktop.portal.Desktop"
MAIN_OBJ = "/org/freedesktop/portal/desktop"
MAIN_IFACE = "org.freedesktop.portal.Settings"
SYSTEM_BUS = False

READ = """
if list(args) != ["org.freedesktop.appearance", "color-scheme"]:
    raise dbus.exceptions.DBusException("none", name="org.freedesktop.portal.Error.NotFound")
ret = dbus.UInt32(2, variant_level=2)
"""


def load(mock, parameters):
    mock.AddMethod(MAIN_IFACE, "Read", "ss", "v", READ)
