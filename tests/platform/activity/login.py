"""A login manager for python-dbusmock. The parameter "byPid" is the code that answers GetSessionByPID."""

import dbus

BUS_NAME = "org.freedesktop.login1"
MAIN_OBJ = "/org/freedesktop/login1"
MAIN_IFACE = "org.freedesktop.login1.Manager"
SYSTEM_BUS = True
SESSION = MAIN_OBJ + "/session/"
GET_SESSION = f"""
if args[0] != "named":
    raise dbus.exceptions.DBusException("none", name="org.example.NoSession")
ret = "{SESSION}named"
"""


def load(mock, parameters):
    mock.AddMethods(MAIN_IFACE, [
        ("GetSessionByPID", "u", "o", parameters["byPid"]),
        ("GetSession", "s", "o", GET_SESSION),
        ("GetUser", "u", "o", f"ret = '{MAIN_OBJ}/user/me'"),
    ])
    mock.AddProperties(MAIN_IFACE, dbus.Dictionary({"PreparingForSleep": False}, signature="sv"))
    for name in ("own", "named", "shown"):
        mock.AddObject(SESSION + name, BUS_NAME + ".Session", {"Active": True, "LockedHint": False}, [])
    display = dbus.Struct(("shown", dbus.ObjectPath(SESSION + "shown")), signature="so")
    mock.AddObject(MAIN_OBJ + "/user/me", BUS_NAME + ".User", {"Display": display}, [])
