"""A GTK 4 window with one text view, speaking gtk_receiver's lines: "ready 0" once the view
has the keyboard focus, "text:" and the buffer on "get", leaves on "quit". Run with Debian's
own python3 (python3-gi, gir1.2-gtk-4.0)."""
import os
import sys

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import GLib, Gtk  # noqa: E402

Gtk.init()
window = Gtk.Window(title="gtk4 receiver", default_width=600, default_height=300)
view = Gtk.TextView(wrap_mode=Gtk.WrapMode.CHAR)
window.set_child(view)
window.present()
loop = GLib.MainLoop()


def say(line):
    sys.stdout.buffer.write(line.encode() + b"\n")
    sys.stdout.flush()


def watch_focus():
    if view.has_focus() and window.is_active():
        say("ready 0")
        return GLib.SOURCE_REMOVE
    view.grab_focus()
    return GLib.SOURCE_CONTINUE


def on_input(fd, condition):
    chunk = os.read(fd, 256)
    if not chunk or b"quit" in chunk:
        loop.quit()
        return GLib.SOURCE_REMOVE
    buffer = view.get_buffer()
    say("text:" + buffer.get_text(buffer.get_start_iter(), buffer.get_end_iter(), False))
    return GLib.SOURCE_CONTINUE


GLib.timeout_add(20, watch_focus)
GLib.unix_fd_add_full(GLib.PRIORITY_DEFAULT, 0, GLib.IOCondition.IN | GLib.IOCondition.HUP, on_input)
window.connect("close-request", lambda *_: loop.quit())
loop.run()
