// Events.cpp - copies of the event records. Their default constructors belong to client/common.
#include "drivelog/Events.h"

namespace Drive {

Header::Header(const Header& other) = default;
Header& Header::operator=(const Header& other) = default;

Events_common::Events_common(const Events_common& other) = default;
Events_common& Events_common::operator=(const Events_common& other) = default;

Events::Events(const Events& other) = default;
Events& Events::operator=(const Events& other) = default;

}  // namespace Drive
