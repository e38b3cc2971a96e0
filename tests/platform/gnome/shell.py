"""A GNOME Shell for python-dbusmock, as far as extensions go. Parameters: "version" (any type), "known" (the identifiers
of the extensions that it found), "state" (of those that are off; 6 if missing), "allOn" (the switch for all of them),
"refusal" (an error for each switch)."""

import dbus
from dbusmock import mockobject

BUS_NAME = "org.gnome.Shell"
MAIN_OBJ = "/org/gnome/Shell"
MAIN_IFACE = "org.gnome.Shell.Extensions"
SYSTEM_BUS = False
FACTS_PATH = "/com/tollmere/Veloria/Shell"
FACTS = "com.tollmere.Veloria.Shell"


def load(mock, parameters):
    known = parameters.get("known", [])
    off = float(parameters.get("state", 6))
    chosen = set()

    def info(uuid):
        if uuid not in known:
            return dbus.Dictionary({}, signature="sv")
        running = uuid in chosen and mock.props[MAIN_IFACE]["UserExtensionsEnabled"]
        return dbus.Dictionary({"uuid": uuid, "state": 1.0 if running and off != 4 else off, "error": "it broke"},
                               signature="sv")

    def switch(uuid, on):
        if parameters.get("refusal"):
            raise dbus.exceptions.DBusException(parameters["refusal"], name="org.gnome.Shell.Error")
        if uuid not in known:
            return False
        (chosen.add if on else chosen.discard)(uuid)
        mock.EmitSignal(MAIN_IFACE, "ExtensionStateChanged", "sa{sv}", [uuid, info(uuid)])
        return True

    def export(facts):
        """What Veloria's extension tells: the text of a dictionary, whose values struct and places make."""
        def struct(*numbers):
            return dbus.Struct(map(dbus.Double, numbers), signature="d" * len(numbers))

        def places(*all):
            return dbus.Array([struct(*each) for each in all], signature="(dddd)")

        values = eval(facts, {"struct": struct, "places": places})
        if FACTS_PATH in mockobject.objects:
            mock.RemoveObject(FACTS_PATH)
        mock.AddObject(FACTS_PATH, FACTS, dbus.Dictionary(values, signature="sv"), [("WatchPointer", "dddd", "", "")])
        mockobject.objects[FACTS_PATH].EmitSignal(
            dbus.PROPERTIES_IFACE, "PropertiesChanged", "sa{sv}as",
            [FACTS, dbus.Dictionary({}, signature="sv"), ["Panel", "FullScreen"]])

    mock.info, mock.switch, mock.export = info, switch, export
    mock.AddMethods(MAIN_IFACE, [
        ("GetExtensionInfo", "s", "a{sv}", "ret = self.info(args[0])"),
        ("EnableExtension", "s", "b", "ret = self.switch(args[0], True)"),
        ("DisableExtension", "s", "b", "ret = self.switch(args[0], False)"),
        ("Export", "s", "", "self.export(args[0])"),
    ])
    mock.AddProperties(MAIN_IFACE, dbus.Dictionary(
        {"ShellVersion": parameters.get("version", "43.9"), "UserExtensionsEnabled": parameters.get("allOn", True)},
        signature="sv"))
