// How the option dialogs of the linked fields write a file's path into a field code: as chosen,
// relative to the current drawing, or as the file's name alone; and the messages that go with
// a relative path that cannot be made.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

class CRegistry;
class LinkedSources;
namespace settings {
struct IntSetting;
}

// The choices of the path-type lists, by index.
enum LinkedPathType : int {
  kFullPathType = 0,
  kRelativePathType = 1,
  kFileNameOnlyType = 2,
};

inline constexpr wchar_t kSaveDrawingFirst[] =
    L"Current drawing must be saved before attaching a file with a relative path. The file will be assigned a "
    L"Full path.";

// A message box of the dialogs (the command line when the host shows none); the button chosen.
int LinkedMessage(LinkedSources& sources, std::wstring_view text, std::wstring_view caption, unsigned flags);

// Whether "Relative Path" may be chosen: not while the current drawing was never saved, which
// is said in a message box.
bool RelativePathAllowed(LinkedSources& sources);

// A path-type list's new choice `type`, by the rule every such list follows: "Relative Path" in a
// drawing never saved is refused as RelativePathAllowed says, leaving the full path chosen and
// `setting` as it was; any other choice, held to the list's indexes 0 to `lastIndex`, is kept in
// `chosen` and in `setting`. False when refused.
bool ChoosePathType(LinkedSources& sources, CRegistry& registry, const settings::IntSetting& setting, int type,
                    int lastIndex, int& chosen);

// The path to write for `file`. A relative path that cannot be made (another drive, a drawing
// never saved) is said in a message box and the type falls back to full path.
std::wstring PathForCode(LinkedSources& sources, std::wstring_view file, int& pathType);

}  // namespace corvane
