#pragma once

#include <string>

#include "common_service/xml.h"

/// The name of the element that the cursor stands on; "nowhere" when it stands on none. Told by a
/// child that is added there and taken away again: the cursor and the document are then as before,
/// but that FindElem looks beside the element where FindElemEx has just gone.
std::string CurrentElement(PELU::CXml& xml);
