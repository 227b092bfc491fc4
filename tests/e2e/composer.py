"""An input method of the kind that asks most of an app: letters stay unfinished until a blank or another character, and
what is unfinished when the focus leaves or the app resets it is dropped. Started beside a running ibus-daemon, it becomes
its engine. It says when it is, and then all that the app shows of it, each time that the app's caret has moved.
"""

import gi

gi.require_version("IBus", "1.0")
from gi.repository import GLib, IBus

OTHERS = IBus.ModifierType.RELEASE_MASK | IBus.ModifierType.CONTROL_MASK | IBus.ModifierType.MOD1_MASK


class Composer(IBus.Engine):
    __gtype_name__ = "MarovendaComposer"

    def __init__(self, **properties):
        super().__init__(**properties)
        self.letters = ""

    def show(self):
        text = IBus.Text.new_from_string(self.letters)
        self.update_preedit_text(text, len(self.letters), bool(self.letters))

    def do_process_key_event(self, key, _, state):
        if state & OTHERS:
            return False
        character = IBus.keyval_to_unicode(key)
        if character.isalpha():
            self.letters += character
            self.show()
            return True
        if not character or not self.letters:
            return False
        self.commit_text(IBus.Text.new_from_string(self.letters))
        self.letters = ""
        self.show()
        return character == " "

    def do_set_cursor_location(self, *_):
        print(self.letters, flush=True)

    def do_focus_out(self):
        self.letters = ""

    def do_reset(self):
        self.letters = ""


def main():
    bus = IBus.Bus()
    factory = IBus.Factory.new(bus.get_connection())
    factory.add_engine("composer", Composer.__gtype__)
    component = IBus.Component.new("org.freedesktop.IBus.Composer", "", "", "", "", "", "", "")
    component.add_engine(IBus.EngineDesc.new("composer", "", "", "es", "", "", "", "us"))
    bus.register_component(component)
    # The daemon asks for an engine by calling back: this must not wait for it.
    bus.set_global_engine_async("composer", -1, None,
                                lambda _, result: print(f"engine {bus.set_global_engine_async_finish(result)}", flush=True))
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
