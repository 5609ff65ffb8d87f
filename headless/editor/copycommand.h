// The editor's copy commands, run by the session as its own builtins.
//
// COPY: "Select objects" (answers one a line, Enter ends), a base point, then second points, one
// copy for each, until Enter; Enter at the first second point takes the base point itself as
// the displacement, as the host does. The copies go into the space of their source.
//
// COPYTOLAYOUT: "Select objects", then the name of a layout ("Model" or a paper-space layout);
// the copies go into that layout's space at the same coordinates.
//
// Each copy is one deep clone that the editor reactors hear of: beginDeepClone with an empty
// mapping, endDeepClone with the finished one; the copies are moved into place after that.
#pragma once

namespace corvane::headless {

class Session;

void copyObjects(Session& session);
void copyToLayout(Session& session);

}  // namespace corvane::headless
