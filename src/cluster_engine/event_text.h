#pragma once

#include <string>

#include "cluster_engine/event.h"

/// Whom an event is about, for a column of its own: "record-03 MeroRecord", a type, or "cluster".
std::string EventSubject(const CEvent& event);

/// What happened, as a sentence to stand behind the subject.
std::string EventSentence(const CEvent& event);
