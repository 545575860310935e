// Keeps every document except the program's own out of the WebKitGTK view.
#pragma once

struct PageHost;

// Call once, before the first SetPageHtml; UI thread. From then on the view refuses navigations, new windows, frames,
// downloads and permissions, and loads only the documents of SetPageHtml. `find` returns the address of a function of
// GTK or WebKitGTK, or null. Returns null, or the name of a function that the installed WebKitGTK lacks: the view is
// then open to other documents and must not be used.
const char* GuardDocuments(PageHost* host, void* (*find)(void* module, const char* name));
