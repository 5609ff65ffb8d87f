// The host editor's notifications: a reactor added to the editor hears of every command's
// start and of how it ended. The command name passed is the command's global name. A command
// that copies objects brackets each deep clone: the mapping is empty at the beginning and
// holds every object cloned, owned ones included, at the end.
#pragma once

namespace corvane::host {

class AcDbDatabase;
class AcDbIdMapping;

class AcEditorReactor {
 public:
  virtual ~AcEditorReactor() = default;
  virtual void commandWillStart(const wchar_t* /*command*/) {}
  virtual void commandEnded(const wchar_t* /*command*/) {}
  virtual void commandCancelled(const wchar_t* /*command*/) {}
  virtual void commandFailed(const wchar_t* /*command*/) {}
  virtual void beginDeepClone(AcDbDatabase* /*to*/, AcDbIdMapping& /*mapping*/) {}
  virtual void endDeepClone(AcDbIdMapping& /*mapping*/) {}
};

class AcEditor {
 public:
  virtual ~AcEditor() = default;
  // Adding a reactor twice or removing one that was never added does nothing.
  virtual void addReactor(AcEditorReactor* reactor) = 0;
  virtual void removeReactor(AcEditorReactor* reactor) = 0;
};

}  // namespace corvane::host
