// Fingers on the screen of a running kwin_wayland, which takes them as those of a person. Reads a command a line:
//
//   down ID X Y, move ID X Y, up ID    a finger, at logical coordinates
//   key CODE, release CODE             a key of a keyboard, by its number in linux/input-event-codes.h
//   wait MILLISECONDS
//   done                               answers with a line once the compositor has had all of the above

#include "fake-input-client-protocol.h"
// The code that belongs to it, which is C: with the declarations above, C++ gives it the same linkage.
#include "fake-input-protocol.h"

#include <wayland-client.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

namespace {

constexpr uint32_t wantedVersion = 4;

void bind(void *data, wl_registry *registry, uint32_t name, const char *interface, uint32_t version)
{
    if (std::strcmp(interface, org_kde_kwin_fake_input_interface.name) != 0 || version < wantedVersion)
        return;
    *static_cast<org_kde_kwin_fake_input **>(data) = static_cast<org_kde_kwin_fake_input *>(
        wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, wantedVersion));
}

void forget(void *, wl_registry *, uint32_t) {}

/// Returns whether the command is known.
bool obey(wl_display *display, org_kde_kwin_fake_input *input, std::istringstream &words)
{
    std::string command;
    uint32_t number = 0;
    words >> command >> number;
    if (command == "down" || command == "move") {
        double x = 0;
        double y = 0;
        words >> x >> y;
        const auto request =
            command == "down" ? org_kde_kwin_fake_input_touch_down : org_kde_kwin_fake_input_touch_motion;
        request(input, number, wl_fixed_from_double(x), wl_fixed_from_double(y));
        org_kde_kwin_fake_input_touch_frame(input);
    } else if (command == "up") {
        org_kde_kwin_fake_input_touch_up(input, number);
        org_kde_kwin_fake_input_touch_frame(input);
    } else if (command == "key" || command == "release") {
        org_kde_kwin_fake_input_keyboard_key(input, number, command == "key" ? 1 : 0);
    } else if (command == "wait") {
        wl_display_flush(display);
        std::this_thread::sleep_for(std::chrono::milliseconds(number));
    } else if (command == "done") {
        wl_display_roundtrip(display);
        std::cout << "done" << std::endl;
    } else {
        return false;
    }
    wl_display_flush(display);
    return true;
}

} // namespace

int main()
{
    const std::unique_ptr<wl_display, decltype(&wl_display_disconnect)> display(wl_display_connect(nullptr),
                                                                                wl_display_disconnect);
    if (!display) {
        std::fputs("finger: there is no compositor at WAYLAND_DISPLAY\n", stderr);
        return EXIT_FAILURE;
    }
    org_kde_kwin_fake_input *input = nullptr;
    const wl_registry_listener listener = {bind, forget};
    wl_registry_add_listener(wl_display_get_registry(display.get()), &listener, &input);
    wl_display_roundtrip(display.get());
    if (!input) {
        std::fputs("finger: the compositor takes no fingers from this program\n", stderr);
        return EXIT_FAILURE;
    }
    org_kde_kwin_fake_input_authenticate(input, "finger", "tests");
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        if (!obey(display.get(), input, words)) {
            std::fprintf(stderr, "finger: unknown command \"%s\"\n", line.c_str());
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
