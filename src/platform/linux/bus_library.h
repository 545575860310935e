// The few functions of libsystemd that talk to the message buses. They are looked up at run time, so that the program
// also runs on a machine without the library. Any thread, each with its own bus.
#pragma once

#include <cstdint>

struct sd_bus;
struct sd_bus_slot;
struct sd_bus_message;

struct BusError {
    const char* name;
    const char* message;
    int needFree;
};

using BusMessageHandler = int (*)(sd_bus_message* message, void* userData, BusError* error);

// bus_library.cpp maps each to the library's function. Negative results are errors.
struct BusLibrary {
    int (*openSystem)(sd_bus** bus) = nullptr;
    int (*openUser)(sd_bus** bus) = nullptr;
    sd_bus* (*flushCloseUnref)(sd_bus* bus) = nullptr;
    int (*getUniqueName)(sd_bus* bus, const char** name) = nullptr;
    int (*getFile)(sd_bus* bus) = nullptr;
    int (*getEvents)(sd_bus* bus) = nullptr;
    int (*getTimeout)(sd_bus* bus, uint64_t* microseconds) = nullptr;
    int (*process)(sd_bus* bus, sd_bus_message** message) = nullptr;
    int (*matchAsync)(sd_bus* bus, sd_bus_slot** slot, const char* match, BusMessageHandler handler,
                      BusMessageHandler installed, void* userData) = nullptr;
    int (*matchSignalAsync)(sd_bus* bus, sd_bus_slot** slot, const char* sender, const char* path,
                            const char* interface, const char* member, BusMessageHandler handler,
                            BusMessageHandler installed, void* userData) = nullptr;
    int (*newMethodCall)(sd_bus* bus, sd_bus_message** message, const char* destination, const char* path,
                         const char* interface, const char* member) = nullptr;
    int (*callAsync)(sd_bus* bus, sd_bus_slot** slot, sd_bus_message* message, BusMessageHandler handler,
                     void* userData, uint64_t microseconds) = nullptr;
    int (*send)(sd_bus* bus, sd_bus_message* message, uint64_t* cookie) = nullptr;
    sd_bus_message* (*unrefMessage)(sd_bus_message* message) = nullptr;
    int (*isMethodError)(sd_bus_message* message, const char* name) = nullptr;
    int (*append)(sd_bus_message* message, const char* types, ...) = nullptr;
    int (*appendArray)(sd_bus_message* message, char type, const void* data, unsigned long size) = nullptr;
    int (*openContainer)(sd_bus_message* message, char type, const char* contents) = nullptr;
    int (*closeContainer)(sd_bus_message* message) = nullptr;
    int (*encodePath)(const char* prefix, const char* id, char** path) = nullptr;
    int (*read)(sd_bus_message* message, const char* types, ...) = nullptr;
    int (*enterContainer)(sd_bus_message* message, char type, const char* contents) = nullptr;
    int (*exitContainer)(sd_bus_message* message) = nullptr;
    int (*skip)(sd_bus_message* message, const char* types) = nullptr;
    int (*sessionOfProcess)(int process, char** session) = nullptr;
};

// Loads the library once and never unloads it. Returns null if it is missing.
const BusLibrary* LoadBusLibrary();
