// The lines that tests send to a program on its standard input: a command and its arguments, separated
// by single blanks, each percent-encoded.
#pragma once

#include <functional>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

/// The words of a line. Throws std::invalid_argument for what cannot be decoded.
Words wordsOf(const std::string& line);

/// A whole number. Throws std::invalid_argument for anything else.
int integer(const std::string& word);

/// Print a line on standard output at once.
void printLine(const std::string& line);

/// Reads standard input on the default main context, line by line.
class CommandInput {
public:
    /// @param answer  makes the answer to a line, which is printed
    /// @param ended   the input has ended
    CommandInput(std::function<std::string(const std::string&)> answer,
                 std::function<void()> ended);
    ~CommandInput();
    CommandInput(const CommandInput&) = delete;
    CommandInput& operator=(const CommandInput&) = delete;

private:
    static int readable(int descriptor, int condition, void* self);
    void take(const std::string& bytes);

    std::function<std::string(const std::string&)> answer_;
    std::function<void()> ended_;
    std::string pending_;
    unsigned source_;
};
