#pragma once

#include "core/RunSettings.h"

class Prompter;

// Tells the user the outcome of the last processor call: the success notice
// for flag "True" with code 200, otherwise the error message for the code
// (title "Remitra error").
void reportResult(Prompter &prompter, const ProcessorResult &result);
