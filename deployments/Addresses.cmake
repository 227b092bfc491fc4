# The rules of the service's base address. CMake checks deployments with them, and marovenda-check --base uses the same ones:
# AddressRules.h is made of them. An address is wrong if it matches WHEN, and does not match MUST or there is no MUST. The first
# rule that it breaks is reported, as "it must REASON".
#
# The expressions see the bytes of UTF-8, and use only what CMake's regular expressions and Perl's have in common. CMake allows
# nine groups.
set(marovenda_address_rules 0)

function(_marovenda_rule reason when must)
    math(EXPR n "${marovenda_address_rules} + 1")
    set(marovenda_address_rules ${n} PARENT_SCOPE)
    set(marovenda_address_rule_${n}_reason "${reason}" PARENT_SCOPE)
    set(marovenda_address_rule_${n}_when "${when}" PARENT_SCOPE)
    set(marovenda_address_rule_${n}_must "${must}" PARENT_SCOPE)
endfunction()

# Stores an expression for characters. Each argument names a range of them: the last byte from FROM to TO, and the bytes before.
function(_marovenda_characters result)
    set(ranges "")
    foreach(range IN LISTS ARGN)
        separate_arguments(range)
        list(POP_FRONT range from to)
        string(ASCII ${from} from)
        string(ASCII ${to} to)
        set(before "")
        if(range)
            string(ASCII ${range} before)
        endif()
        string(APPEND ranges "|${before}[${from}-${to}]")
    endforeach()
    string(SUBSTRING "${ranges}" 1 -1 ranges)
    set(${result} "${ranges}" PARENT_SCOPE)
endfunction()

# Blanks other than the usual one: U+00A0, U+1680, U+2000 to U+200A, U+202F, U+205F, U+2800, U+3000, U+3164.
_marovenda_characters(marovenda_other_blanks
    "160 160 194" "128 128 225 154" "128 138 226 128" "175 175 226 128" "159 159 226 129" "128 128 226 160" "128 128 227 128"
    "164 164 227 133")
# Control characters, and what has no shape: U+00AD, U+034F, U+061C, U+180B to U+180F, U+200B to U+200F, U+2028 to U+202E, U+2060
# to U+206F, U+FEFF, U+FFF9 to U+FFFB, U+E0000 to U+E007F. Most of them set the direction of writing or break lines.
_marovenda_characters(marovenda_unseen
    "1 31" "127 127" "128 159 194" "173 173 194" "143 143 205" "156 156 216" "139 143 225 160" "139 143 226 128"
    "168 174 226 128" "160 175 226 129" "191 191 239 187" "185 187 239 191" "128 191 243 160 128" "128 191 243 160 129")

function(_marovenda_make_rules)
    set(part "[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?")
    set(name "${part}(\\.${part})*")
    set(number "([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])")
    set(ipv4 "${number}\\.${number}\\.${number}\\.${number}")
    set(hex "[0-9A-Fa-f]")
    set(group "${hex}${hex}?${hex}?${hex}?")
    string(REPEAT "${group}:" 6 six_groups)
    string(REPEAT "${hex}+:+" 6 six_of_many)
    set(ending "[0-9]+\\.[0-9.]+")
    set(ipv6 "(${six_groups}(${group}:${group}|${ending})|(${group}(:${group})*)?::((${group}:)*(${group}|${ending}))?)")
    set(port
        "([1-9][0-9]?[0-9]?[0-9]?|[1-5][0-9][0-9][0-9][0-9]|6[0-4][0-9][0-9][0-9]|65[0-4][0-9][0-9]|655[0-2][0-9]|6553[0-5])")
    set(host "([^][/:]+|\\[[^]]*\\])")
    string(REPEAT "[A-Za-z0-9-]" 64 long_part)
    string(REPEAT "[^/:]" 254 long_name)

    _marovenda_rule("contain no blanks, tabs or invisible characters" " |${marovenda_other_blanks}|${marovenda_unseen}" "")
    _marovenda_rule("begin with https://" "^" "^https?://")
    _marovenda_rule("have a host" "^" "^https?://[^/:?#]")
    _marovenda_rule("be without user, query and fragment" "[?#]|^https?://[^/]*@" "")
    _marovenda_rule("end in \"/\"" "^" "^https?://.*/$")
    _marovenda_rule("contain none of \" < > \\ ^ ` { | }" "[\"<>\\\\^`{|}]" "")
    _marovenda_rule("contain [ and ] only around an IPv6 address" "^https?://[^/]*/.*[][]" "")
    _marovenda_rule("have two hexadecimal digits after each %" "%${hex}?[^0-9A-Fa-f]" "")
    foreach(must IN ITEMS "^https?://\\[${ipv6}\\](:[^/]*)?/" "^https?://\\[([^.]*|.*:${ipv4})\\]")
        _marovenda_rule("have a valid IPv6 address in the brackets" "^https?://\\[" "${must}")
    endforeach()
    # Eight groups leave none for "::".
    _marovenda_rule("have a valid IPv6 address in the brackets" "^https?://\\[:*${six_of_many}${hex}+(:+${hex}|\\.)"
        "^https?://\\[[^]:]+(:[^]:]+)*\\]")
    _marovenda_rule(
        "have a host of letters a to z, digits, hyphens and single dots (for other letters, its name that begins with xn--)"
        "^https?://[^[]" "^https?://${name}(:[^/]*)?/")
    _marovenda_rule("have a host of at most 253 characters, with at most 63 between two dots"
        "^https?://([^/:]*${long_part}|${long_name})" "")
    # Such a host is taken for an IPv4 address, also if it is none.
    _marovenda_rule("have an IPv4 address of four numbers from 0 to 255, without leading zeros"
        "^https?://([^/:]*\\.)?([0-9]+|0[xX]${hex}*)(:[^/]*)?/" "^https?://${ipv4}(:[^/]*)?/")
    _marovenda_rule("have a port from 1 to 65535" "^https?://${host}:" "^https?://${host}:${port}/")
    _marovenda_rule("begin with https://, which protects passwords; only this machine's own address may be used without https"
        "^http:" "^http://(127\\.[0-9]+\\.[0-9]+\\.[0-9]+|localhost|\\[::1\\])(:[0-9]+)?/")

    foreach(n RANGE 1 ${marovenda_address_rules})
        foreach(what IN ITEMS reason when must)
            set(marovenda_address_rule_${n}_${what} "${marovenda_address_rule_${n}_${what}}" PARENT_SCOPE)
        endforeach()
    endforeach()
    set(marovenda_address_rules ${marovenda_address_rules} PARENT_SCOPE)
endfunction()
_marovenda_make_rules()

# Stores what a base address must be and is not; nothing if it is right.
function(marovenda_trouble_with_base_url address result)
    foreach(n RANGE 1 ${marovenda_address_rules})
        if(address MATCHES "${marovenda_address_rule_${n}_when}")
            if(marovenda_address_rule_${n}_must STREQUAL "" OR NOT address MATCHES "${marovenda_address_rule_${n}_must}")
                set(${result} "${marovenda_address_rule_${n}_reason}" PARENT_SCOPE)
                return()
            endif()
        endif()
    endforeach()
    set(${result} "" PARENT_SCOPE)
endfunction()

# The same for the address of a link: https, with or without path, query and fragment.
function(marovenda_trouble_with_site address result)
    string(REGEX REPLACE "[?#].*" "" page "${address}")
    if(NOT page MATCHES "/$")
        string(APPEND page "/")
    endif()
    marovenda_trouble_with_base_url("${page}" trouble)
    if(trouble STREQUAL "" AND NOT page MATCHES "^https:")
        set(trouble "begin with https://")
    elseif(trouble STREQUAL "" AND address MATCHES "[ \"<>]|${marovenda_other_blanks}|${marovenda_unseen}")
        set(trouble "contain no blanks and none of \" < >")
    endif()
    set(${result} "${trouble}" PARENT_SCOPE)
endfunction()

# The same for an e-mail address.
function(marovenda_trouble_with_mail address result)
    string(REGEX REPLACE "^.*@" "" domain "${address}")
    marovenda_trouble_with_base_url("https://${domain}/" trouble)
    if(NOT trouble STREQUAL "" OR address MATCHES "^\\.|\\.\\.|\\.@"
            OR NOT address MATCHES "^[A-Za-z0-9.!#$%&'*+/=?^_`{|}~-]+@([A-Za-z0-9-]+\\.)+[A-Za-z][A-Za-z0-9-]+$")
        set(trouble "be an e-mail address without a name")
    endif()
    set(${result} "${trouble}" PARENT_SCOPE)
endfunction()

# Writes the rules for C++.
function(marovenda_write_address_rules header)
    set(rows "")
    foreach(n RANGE 1 ${marovenda_address_rules})
        string(REGEX REPLACE "[\"\\\\]" "\\\\\\0" reason "${marovenda_address_rule_${n}_reason}")
        string(APPEND rows "    {\"${reason}\"")
        foreach(what IN ITEMS when must)
            set(expression "${marovenda_address_rule_${n}_${what}}")
            if(expression MATCHES "^[ -~]*$")
                string(APPEND rows ",\n     R\"~(${expression})~\"")
            else()
                string(HEX "${expression}" hex)
                string(REGEX REPLACE "(..)" "\\\\x\\1" hex "${hex}")
                string(APPEND rows ",\n     \"${hex}\"")
            endif()
        endforeach()
        string(APPEND rows "},\n")
    endforeach()
    file(CONFIGURE OUTPUT ${header} @ONLY CONTENT "// Generated from Addresses.cmake by CMake; edit that file instead.
#pragma once

namespace Deployment {

/// The expressions are for the bytes of UTF-8. See Addresses.cmake.
struct AddressRule {
    const char *reason, *when, *must;
};
inline constexpr AddressRule addressRules[] = {
@rows@};

} // namespace Deployment
")
endfunction()
