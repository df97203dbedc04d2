// json_answers.h: a scenario for a program: each line that it sends is answered with one JSON
// object on one line. docs/reference/protocol.md tells the members.

#pragma once

#include "host/trace/trace_writer.h"

#include <cstddef>
#include <span>

namespace orvanel {

/// Answers in JSON from now on, and greets.
void start_answers();
bool answers_in_json();

/// A line begins, and what is printed and told from here on belongs to it. give_answer ends it, if
/// one has begun: it is done, and so are all waits and files that it began. Both do nothing without
/// start_answers.
void begin_answer(int line);
void give_answer();

/// Mistakes that the trace has found, which are faults of the device's bytes, and how many more
/// there were.
void answer_mistakes(std::span<const Mistake> mistakes, std::size_t unkept);

/// The last object, after the module's end: what was left to tell, and the exit status.
void end_answers(int status);

}  // namespace orvanel
