#!/usr/bin/python3
"""Starts the program and reads its console as a screen reader does, over AT-SPI: every page,
every control that can take the keyboard must have a name. Fails with the unnamed ones.

Usage: accessible_console.py ZORVANE_BINARY
Needs a display and a session bus of its own (xvfb-run-test, dbus-run-session); the bus
starts the accessibility bus when asked for it.
"""
import os
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

DEADLINE_S = 40
# Where the console's pages are opened from: the navigation column, then the buttons that lead
# to the add and preference pages; the console starts on the home page, seen last. The program
# runs in Chinese, its source language: the English names are checked complete elsewhere.
PAGES = ["命令词", "添加", "应用设置", "偏好设置 ›", "鼠标设置", "首页"]
PAGE_WAIT_S = 10
# How Qt shows a push button, a checkable one and the page buttons.
BUTTONS = ("push button", "toggle button", "check box")


def states(node):
    return node.get_state_set()


def showing(node):
    return states(node).contains(Atspi.StateType.SHOWING)


def walk(node, path, found):
    """Every showing node under node, with its path of roles."""
    try:
        count = node.get_child_count()
    except GLib.Error:
        return
    for i in range(count):
        child = node.get_child_at_index(i)
        if child is None or not showing(child):
            continue
        here = path + [child.get_role_name()]
        found.append((child, here))
        walk(child, here, found)


def console(app):
    """The console's frame: the window with the page navigation."""
    # Read afresh: what the library kept of the last reading is from the page before.
    app.clear_cache()
    for i in range(app.get_child_count()):
        window = app.get_child_at_index(i)
        if window is None or not showing(window):
            continue
        nodes = []
        walk(window, [], nodes)
        names = {n.get_name() for n, _ in nodes}
        if PAGES[-1] in names:
            return window, nodes
    return None, []


def shown_names(nodes):
    return sorted((n.get_role_name(), n.get_name() or "") for n, _ in nodes)


def find_program(pid):
    desktop = Atspi.get_desktop(0)
    desktop.clear_cache()
    for i in range(desktop.get_child_count()):
        app = desktop.get_child_at_index(i)
        if app is not None and app.get_process_id() == pid:
            return app
    return None


def unnamed(nodes):
    bad = []
    for node, path in nodes:
        if states(node).contains(Atspi.StateType.FOCUSABLE) and not (node.get_name() or "").strip():
            bad.append("/".join(path) + " (description: %r)" % node.get_description())
    return bad


def main():
    program = sys.argv[1]
    config = os.environ.get("XDG_CONFIG_HOME", os.path.expanduser("~/.config"))
    # Started as from the session's autostart: no question comes before the console.
    os.makedirs(os.path.join(config, "autostart"), exist_ok=True)
    with open(os.path.join(config, "autostart", "zorvane.desktop"), "w") as entry:
        entry.write("[Desktop Entry]\nType=Application\nName=Zorvane\nExec=zorvane\n")
    env = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
               LANGUAGE="zh_CN")
    child = subprocess.Popen([program], env=env)
    try:
        Atspi.init()
        end = time.monotonic() + DEADLINE_S
        window = None
        while window is None:
            if child.poll() is not None:
                print("the program ended with %d before its console showed" % child.returncode)
                return 1
            if time.monotonic() > end:
                print("no console in the accessibility tree after %d s" % DEADLINE_S)
                return 1
            app = find_program(child.pid)
            if app is not None:
                window, _ = console(app)
            if window is None:
                time.sleep(0.2)

        failures = []
        walked = 0
        for page in PAGES:
            _, nodes = console(app)
            # A button: a heading or a column may carry the same words.
            openers = [n for n, _ in nodes if n.get_name() == page and n.get_role_name() in BUTTONS]
            opener = openers[0] if openers else None
            if opener is None:
                failures.append("no control opens the page %s" % page)
                continue
            before = shown_names(nodes)
            # A press is a click a moment later (as the pointer's would look): wait for the page.
            opener.do_action(0)
            end = time.monotonic() + PAGE_WAIT_S
            while shown_names(nodes) == before and time.monotonic() < end:
                time.sleep(0.05)
                _, nodes = console(app)
            if shown_names(nodes) == before:
                failures.append("the page %s did not open" % page)
                continue
            walked += len(nodes)
            failures += ["unnamed on %s: %s" % (page, b) for b in unnamed(nodes)]
        for line in sorted(set(failures)):
            print(line)
        print("%d pages, %d shown nodes read" % (len(PAGES), walked))
        return 1 if failures else 0
    finally:
        child.terminate()
        try:
            child.wait(10)
        except subprocess.TimeoutExpired:
            child.kill()


if __name__ == "__main__":
    sys.exit(main())
