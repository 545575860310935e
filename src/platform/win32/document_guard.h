// Keeps every document except the program's own out of the WebView2 view.
#pragma once

struct PageHost;

// Call once, before the first SetPageHtml; UI thread. From then on the view refuses navigations, new windows, frames,
// downloads, permissions and drops, and loads only the documents of SetPageHtml. False if the runtime does not take the
// handlers: the view is then open to other documents and must not be used. An older runtime that knows no downloads or
// no drops is guarded without them.
bool GuardDocuments(PageHost* host);
// Whether the address of the view's document is one that a document of SetPageHtml can have. UI thread.
bool HasOwnAddress(PageHost* host);
