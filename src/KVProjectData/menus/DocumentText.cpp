#include "KVProjectData/menus/DocumentText.h"

#include "platform/automation/Bstr.h"
#include "platform/com/Error.h"
#include "platform/xml/XmlText.h"

#include <string>

namespace kv {

void RequireDocumentText(BSTR text)
{
    std::string converted;
    if (!ToXmlUtf8(View(text), converted)) throw Error(E_INVALIDARG);
}

} // namespace kv
