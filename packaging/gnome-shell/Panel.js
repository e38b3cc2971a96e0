const WELL_KNOWN_NAME = 'com.tollmere.Veloria.Panel';
const WANTED_PATH = '/com/tollmere/Veloria/Panel';
const FACTS_PATH = '/com/tollmere/Veloria/Shell';
const FACTS_INTERFACE = 'com.tollmere.Veloria.Shell';
const CLEAR = 'veloria-clear';

// Positions and rectangles (x, y, width, height) are shares of all monitors together, from 0 to 1, from the top left.
const FACTS_XML = `
<node>
  <interface name="${FACTS_INTERFACE}">
    <property name="Panel" type="(dddd)" access="read"/>
    <property name="FullScreen" type="a(dddd)" access="read"/>
    <method name="WatchPointer">
      <arg name="x" type="d" direction="in"/>
      <arg name="y" type="d" direction="in"/>
      <arg name="width" type="d" direction="in"/>
      <arg name="height" type="d" direction="in"/>
    </method>
    <signal name="Pointer">
      <arg name="x" type="d"/>
      <arg name="y" type="d"/>
    </signal>
  </interface>
</node>`;

const NEAR_MS = 17;
const FAR_MS = 50;
const SHORTEST_PAUSE_US = 16500;

function share(rect) {
    const [width, height] = global.stage.get_size();
    return [rect.x / width, rect.y / height, rect.width / width, rect.height / height];
}

/** Sends the pointer's position to one program: in an area with each move, up to 60 times a second, and once outside. */
class PointerReport {
    constructor(receiver, area) {
        this._receiver = receiver;
        this._area = area;
        this._near = false;
        this._sentAt = 0;
        this._watchEvery(FAR_MS);
        this._moved(...global.get_pointer());
    }

    end() {
        this._watch.remove();
        this._watch = null;
    }

    _watchEvery(milliseconds) {
        this._watch?.remove();
        this._watch = getPointerWatcher().addWatch(milliseconds, (x, y) => this._moved(x, y));
    }

    _moved(pixelX, pixelY) {
        const [x, y] = share({x: pixelX, y: pixelY, width: 0, height: 0});
        const [left, top, width, height] = this._area;
        const near = x >= left && x <= left + width && y >= top && y <= top + height;
        const crossed = near !== this._near;
        this._near = near;
        if (crossed)
            this._watchEvery(near ? NEAR_MS : FAR_MS);
        const now = GLib.get_monotonic_time();
        if (near ? now - this._sentAt < SHORTEST_PAUSE_US : !crossed)
            return;
        this._sentAt = now;
        Gio.DBus.session.emit_signal(this._receiver, FACTS_PATH, FACTS_INTERFACE, 'Pointer',
            new GLib.Variant('(dd)', [x, y]));
    }
}

/** Tells Veloria, as long as it runs, what no program can find out by itself on Wayland. */
class Facts {
    constructor(receiver) {
        this._receiver = receiver;
        this._object = Gio.DBusExportedObject.wrapJSObject(FACTS_XML, this);
        this._object.export(Gio.DBus.session, FACTS_PATH);
        const changed = () => this._changed();
        this._connections = [
            [Main.layoutManager.panelBox, 'notify::allocation'],
            [Main.layoutManager, 'monitors-changed'],
            [global.display, 'in-fullscreen-changed'],
        ].map(([object, signal]) => [object, object.connect(signal, changed)]);
        this._announce();
    }

    end() {
        this._pointer?.end();
        this._pointer = null;
        this._connections.forEach(([object, id]) => object.disconnect(id));
        this._connections = [];
        this._object.unexport();
        this._object = null;
        this._announce();
    }

    get Panel() {
        return share(Main.layoutManager.panelBox);
    }

    get FullScreen() {
        return Main.layoutManager.monitors
            .filter(monitor => global.display.get_monitor_in_fullscreen(monitor.index))
            .map(share);
    }

    /** An empty area ends it. */
    WatchPointerAsync(area, invocation) {
        const known = invocation.get_sender() === this._receiver && area.every(Number.isFinite);
        if (known) {
            this._pointer?.end();
            const [, , width, height] = area;
            this._pointer = width > 0 && height > 0 ? new PointerReport(this._receiver, area) : null;
        }
        invocation.return_value(null);
    }

    _changed() {
        const now = JSON.stringify([this.Panel, this.FullScreen]);
        if (now !== this._told)
            this._announce();
        this._told = now;
    }

    /** That the object is there, has other values, or is gone. */
    _announce() {
        Gio.DBus.session.emit_signal(this._receiver, FACTS_PATH, 'org.freedesktop.DBus.Properties', 'PropertiesChanged',
            new GLib.Variant('(sa{sv}as)', [FACTS_INTERFACE, {}, ['Panel', 'FullScreen']]));
    }
}

/** Makes the panel clear while Veloria runs and wants to be seen through it. */
class Panel {
    constructor() {
        this._cancellable = new Gio.Cancellable();
        Gio.DBusProxy.new(Gio.DBus.session, Gio.DBusProxyFlags.DO_NOT_AUTO_START, null, WELL_KNOWN_NAME, WANTED_PATH,
            WELL_KNOWN_NAME, this._cancellable, (source, result) => this._follow(result));
    }

    end() {
        this._cancellable.cancel();
        this._cancellable = null;
        this._connections?.forEach(id => this._proxy.disconnect(id));
        this._connections = null;
        this._proxy = null;
        this._facts?.end();
        this._facts = null;
        Main.panel.remove_style_class_name(CLEAR);
    }

    _follow(result) {
        try {
            this._proxy = Gio.DBusProxy.new_finish(result);
        } catch (error) {
            if (!error.matches(Gio.IOErrorEnum, Gio.IOErrorEnum.CANCELLED))
                console.error(error);
            return;
        }
        this._connections = ['g-properties-changed', 'notify::g-name-owner']
            .map(signal => this._proxy.connect(signal, () => this._update()));
        this._update();
    }

    _update() {
        const owner = this._proxy.g_name_owner;
        if (owner !== this._owner) {
            this._owner = owner;
            this._facts?.end();
            this._facts = owner ? new Facts(owner) : null;
        }
        const wanted = this._proxy.get_cached_property('Wanted');
        if (owner && wanted?.get_type_string() === 'b' && wanted.get_boolean())
            Main.panel.add_style_class_name(CLEAR);
        else
            Main.panel.remove_style_class_name(CLEAR);
    }
}
