// report.h: what a scenario says: the lines it prints, and its faults, which make the exit status.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

// Exit statuses. Of several faults the first in the order wrong_line, gave_up, expectation_failed
// gives the status.
constexpr int all_well = 0;
constexpr int expectation_failed = 1;
constexpr int wrong_line = 2;  // or a wrong command line
constexpr int gave_up = 3;     // settle

struct Fault {
    int status;  // one of the above, not all_well
    int line;    // of the scenario, from 1; 0 for the scenario as a whole; brings_its_place
    std::string text;
};

constexpr int brings_its_place = -1;  // the text begins with `FILE:LINE:` and the kind of fault

/// Takes what is printed and told in place of the standard streams, for a program that reads
/// answers (json_answers.h). `files` are the pictures that were written about the fault.
struct OutputSink {
    void (*printed)(std::string_view line);
    void (*event)(std::string_view line);
    void (*fault)(const Fault& fault, const std::vector<std::string>& files);
};
extern const OutputSink* output_sink;  // null: there is none

/// Puts a line on standard output, whatever sink there is.
void put_line(std::string_view line);

/// The scenario's file as the user named it (whoever sets it keeps the text alive), and the line
/// that runs.
extern std::string_view scenario_name;
extern int scenario_line;

/// Where the faults go besides standard error, as records for parse_fault_records; -1 for nowhere.
extern int fault_record_fd;

/// Puts one line on standard output at once. A line that can't be written is a fault.
void print_line(std::string_view line);

/// The same for what nobody has asked for: a message, a beep, a dialog.
void print_event(std::string_view line);

/// A picture that was written about the fault which is told next.
void note_fault_file(const std::string& path);

/// Lets a fault that is told elsewhere count for the exit status.
void count_fault(int status);

/// Tells a fault of the running line, or of the whole scenario while scenario_line is 0, on
/// standard error.
void report_fault(int status, std::string_view text);

/// How many faults there were that a wrong line makes.
int wrong_lines();

/// Whether standard output has refused a line.
bool output_is_gone();

/// The status that the faults so far make.
int fault_status();

/// The one that counts more.
int worse_status(int a, int b);

/// `FILE:LINE: error: text`, without the line if that is 0.
std::string fault_message(std::string_view name, const Fault& fault);

/// The file that the results go to is one that the scenario reads.
void write_withheld_record();

/// Ends the records: a scenario that doesn't come this far has died.
void write_end_record();

struct FaultRecords {
    std::vector<Fault> faults;
    bool results_withheld;  // they must not be written
    bool complete;          // the end record was there
};

/// Reads records back.
FaultRecords parse_fault_records(std::string_view records);

}  // namespace orvanel
