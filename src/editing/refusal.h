// Why a page command changed nothing.
#pragma once

enum class Refusal {
    None,       // it was done
    Recording,  // not while a recording runs
    Playing,    // not while a playback runs
    Revision,   // the macro has changed since the revision that the page has seen
    Argument,   // malformed or out of range
    Default,    // the name of the default profile is fixed
    Unknown,    // no such id
};
