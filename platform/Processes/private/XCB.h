/// \file
/// libxcb, loaded when windows are first asked about: a program that never does needs none of it, at its start or ever.
#pragma once
#include <xcb/xcb.h>

namespace tarvik::processes {

struct XCB {
    decltype(&xcb_connect) connect;
    decltype(&xcb_connection_has_error) connection_has_error;
    decltype(&xcb_disconnect) disconnect;
    decltype(&xcb_flush) flush;
    decltype(&xcb_get_input_focus) get_input_focus;
    decltype(&xcb_get_input_focus_reply) get_input_focus_reply;
    decltype(&xcb_get_property) get_property;
    decltype(&xcb_get_property_reply) get_property_reply;
    decltype(&xcb_get_property_value) get_property_value;
    decltype(&xcb_get_property_value_length) get_property_value_length;
    decltype(&xcb_get_setup) get_setup;
    decltype(&xcb_intern_atom) intern_atom;
    decltype(&xcb_intern_atom_reply) intern_atom_reply;
    decltype(&xcb_screen_next) screen_next;
    decltype(&xcb_send_event) send_event;
    decltype(&xcb_setup_roots_iterator) setup_roots_iterator;
};
/// Null when the library isn't installed.
const XCB *xcb();

}  // namespace tarvik::processes
