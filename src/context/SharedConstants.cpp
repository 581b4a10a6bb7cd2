#include "context/SharedConstants.h"

#include "foundation/Paths.h"

namespace korvane {

Text EditorExecutablePath(TextView editorRoot)
{
    return JoinPath(editorRoot, kEditorRelativePath);
}

}  // namespace korvane
