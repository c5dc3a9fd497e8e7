#pragma once

#include "serve/route.h"

/// Takes the input of the route's kind: the body's fields and what stands in the path. Its answer
/// goes out when the engine's thread has given it.
void TakeInput(const CAsked& asked);

/// Takes one report or a list of reports of any kind. Of a list each is answered for itself, in its
/// order.
void TakeReports(const CAsked& asked);
