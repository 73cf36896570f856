/// Shapes of options that several verbs have.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

namespace quorvex::tools {

/// Of every verb with one output file.
inline constexpr const char* kOutputHelp = "Output, - for standard output";
/// Of every verb that may have several.
inline constexpr const char* kOutputsHelp = "Output, - for standard output; a folder for several";

/// Adds the output, without which nothing is done.
inline CLI::Option* AddOutput(CLI::App& verb, std::string& output, const char* help) {
    return verb.add_option("-o,--output", output, help)->required()->type_name("OUT");
}

/// Adds an option whose text `parse` turns into the value of `field`.
template <class Field, class Parse>
CLI::Option* AddParsed(CLI::App& verb, const char* name, const char* metavar, const char* help,
                       Field& field, Parse parse) {
    return verb
        .add_option_function<std::string>(
            name, [&field, parse](const std::string& text) { field = parse(text); }, help)
        ->type_name(metavar);
}

/// "one|two|three", as the name of what such an option takes.
template <class Value>
std::string Alternatives(const std::map<std::string, Value>& words) {
    std::string names;
    for (const auto& [word, value] : words) names += (names.empty() ? "" : "|") + word;
    return names;
}

/// Adds an option whose text is one of some words, each for a value of `field`.
template <class Field, class Value>
CLI::Option* AddWords(CLI::App& verb, const char* name, const char* help, Field& field,
                      const std::map<std::string, Value>& words) {
    CLI::CheckedTransformer transformer(words);
    transformer.description("");  // the name of the type has the words already
    return verb.add_option(name, field, help)
        ->transform(transformer)
        ->type_name(Alternatives(words));
}

/// Adds an option that may stand several times, each time one more element of `list`.
template <class Element, class Parse>
CLI::Option* AddRepeated(CLI::App& verb, const char* name, const char* metavar, const char* help,
                         std::vector<Element>& list, Parse parse) {
    return verb
        .add_option_function<std::vector<std::string>>(
            name,
            [&list, parse](const std::vector<std::string>& texts) {
                for (const auto& text : texts) list.push_back(parse(text));
            },
            help)
        ->type_name(metavar)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

}  // namespace quorvex::tools
