// Scripts through the scripting component, and the prompt for them.
#pragma once
#include <Carbon/OSA.h>

#include <string>
#include <vector>

/// The bytes of a descriptor, which is disposed of.
std::string taken(AEDesc &desc);

class Scripting {
public:
    Scripting();
    ~Scripting();
    Scripting(const Scripting &) = delete;
    ComponentInstance component() const { return component_; }

    OSAError compile(const std::string &source, SInt32 mode, OSAID &script);
    /// Runs it; with arguments its run handler is given them.
    OSAError run(OSAID script, const std::vector<std::string> &arguments, OSAID &value);
    std::string display(OSAID value, bool forPeople);
    std::string sourceOf(OSAID script);
    /// The latest error: "NAME:LINE:COLUMN: MESSAGE (NUMBER)", and the line with the place marked.
    std::string explained(const std::string &source, const std::string &name);
    /// What the latest error says (kOSAErrorMessage ...).
    std::string part(OSType selector);

private:
    ComponentInstance component_;
};

/// Reads scripts line by line and runs them; variables and handlers go on living. Ends with the input.
int promptForScripts(Scripting &scripting);
