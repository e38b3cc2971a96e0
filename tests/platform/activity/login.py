"""A login manager for python-dbusmock, whole before it answers its first call.

Parameters: "byPid" is the code that answers GetSessionByPID.
"""

import dbus

BUS_NAME = "org.freedesktop.login1"
MAIN_OBJ = "/org/freedesktop/login1"
MAIN_IFACE = "org.freedesktop.login1.Manager"
SYSTEM_BUS = True

SESSION = "org.freedesktop.login1.Session"
USER = "org.freedesktop.login1.User"


def session_path(name):
    return f"{MAIN_OBJ}/session/{name}"


GET_SESSION = f"""
if args[0] != "named":
    raise dbus.exceptions.DBusException("none", name="org.example.NoSession")
ret = "{session_path("named")}"
"""


def load(mock, parameters):
    mock.AddMethods(MAIN_IFACE, [
        ("GetSessionByPID", "u", "o", parameters["byPid"]),
        ("GetSession", "s", "o", GET_SESSION),
        ("GetUser", "u", "o", f"ret = '{MAIN_OBJ}/user/me'"),
    ])
    mock.AddProperties(MAIN_IFACE, dbus.Dictionary({"PreparingForSleep": False}, signature="sv"))
    for name in ("own", "named", "shown"):
        mock.AddObject(session_path(name), SESSION, {"Active": True, "LockedHint": False, "IdleHint": False}, [])
    display = dbus.Struct(("shown", dbus.ObjectPath(session_path("shown"))), signature="so")
    mock.AddObject(f"{MAIN_OBJ}/user/me", USER, {"Display": display}, [])
