# Changes one value of the demo deployment at a time; the check must say which one is wrong, why, and show a right one.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(READ ${SOURCE}/deployments/demo.cmake demo)

function(write_deployment name value)
    string(REGEX REPLACE "set\\(MAROVENDA_${name} [^\n]*\\)" "" text "${demo}")
    if(NOT value STREQUAL "UNSET")
        string(APPEND text "set(MAROVENDA_${name} [=[${value}]=])\n")
    endif()
    file(WRITE ${WORK}/deployment.cmake "${text}")
endfunction()

# What the check says of the file written last, without its line ends.
function(check code said)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -DFILE=${WORK}/deployment.cmake -P ${SOURCE}/deployments/validate.cmake
        RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    set(${code} "${result}" PARENT_SCOPE)
    set(${said} "${output}" PARENT_SCOPE)
endfunction()

# Wants the file written last to be refused with these words.
function(expect words)
    check(code said)
    string(REGEX REPLACE "[ \n]+" " " words "${words}")
    string(FIND "${said}" "${words}" at)
    if(code EQUAL 0 OR at EQUAL -1)
        message(SEND_ERROR "not refused with: ${words}\nbut: ${said}")
    endif()
    set(said "${said}" PARENT_SCOPE)
endfunction()

function(accept name)
    foreach(value IN LISTS ARGN)
        write_deployment(${name} "${value}")
        check(code said)
        if(NOT code EQUAL 0)
            message(SEND_ERROR "refused: ${name} \"${value}\": ${said}")
        endif()
    endforeach()
endfunction()

# refuse(NAME REASON VALUE...): each value is refused, with itself, the reason and an example.
function(refuse name reason)
    foreach(value IN LISTS ARGN)
        write_deployment(${name} "${value}")
        expect("MAROVENDA_${name} is \"${value}\"; it must ${reason}, as in \"${example_of_${name}}\".")
    endforeach()
endfunction()

# The same for a value that has to be shown differently.
function(refuse_unseen name reason value shown)
    write_deployment(${name} "${value}")
    expect("MAROVENDA_${name} is \"${shown}\"; it must ${reason}, as in \"${example_of_${name}}\".")
    string(FIND "${said}" "MAROVENDA_${name} is " first)
    string(FIND "${said}" "MAROVENDA_${name} is " last REVERSE)
    if(NOT first EQUAL last)
        message(SEND_ERROR "said twice: ${said}")
    endif()
endfunction()

# Appends a line to the demo deployment, from which NAME is missing.
function(refuse_line name line words)
    write_deployment(${name} "UNSET")
    file(APPEND ${WORK}/deployment.cmake "${line}\n")
    expect("${words}")
    if(words MATCHES "is written as" AND said MATCHES "is not set")
        message(SEND_ERROR "said twice: ${said}")
    endif()
endfunction()

# A character from its bytes.
function(character result)
    string(ASCII ${ARGN} text)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()
character(no_break_space 194 160)
character(ideographic_space 227 128 128)
character(zero_width_space 226 128 139)
character(right_to_left 226 128 143)
character(override 226 128 174)
character(isolate 226 129 166)
character(soft_hyphen 194 173)
character(next_line 194 133)
character(tag 243 160 129 129)

set(example_of_BASE_URL "https://api.company.example/app/")
set(example_of_TRACKING_URL "https://www.aftership.com/track/")
set(example_of_SUPPORT_EMAIL "soporte@company.example")
set(example_of_WAREHOUSE_STREET "100 \\\"Gran\\\" Way, Suite 12")
set(example_of_WAREHOUSE_CITY "Miami")
set(example_of_WAREHOUSE_ZIP "33166-0012")
set(example_of_WAREHOUSE_PHONE "+1 305 555 0142")
set(example_of_DEVELOPER_SITE "https://developer.example/")
set(example_of_DEVELOPER_SITE_TEXT "developer.example")
set(example_of_DEVELOPER_EMAIL "hola@developer.example")
set(example_of_HOMEPAGE "https://www.company.example/")
set(example_of_MAINTAINER "Compañía de Ejemplo, S.A.")

# Addresses. tst_Addresses has more of them.
set(begin "begin with https://")
set(host "have a host of letters a to z, digits, hyphens and single dots (for other letters, its name that begins with xn--)")
set(number "have an IPv4 address of four numbers from 0 to 255, without leading zeros")
set(group "have a valid IPv6 address in the brackets")
set(port "have a port from 1 to 65535")
set(bare "be without user, query and fragment")
set(clear "begin with https://, which protects passwords; only this machine's own address may be used without https")
accept(BASE_URL "https://service.example/" "https://service.example:8443/app/" "http://127.0.0.1:9999/" "http://localhost/"
    "https://localhost/" "http://[::1]:80/" "https://[2001:db8::1]/" "https://service.example:1/" "https://service.example:65535/"
    "https://10.0.0.255/" "https://xn--compaa-7va8r.example/" "https://service.example/envíos/" "https://service.example/a@b%20c/"
    "https://[1:2:3:4:5:6:7:8]/" "https://[::ffff:10.0.0.1]/" "https://Service.EXAMPLE/" "https://service/")
refuse(BASE_URL "${begin}" "ftp://x/" "service.example/" "HTTPS://service.example/")
refuse(BASE_URL "have a host" "https:///" "https://" "https://:80/")
refuse(BASE_URL "${host}" "https://api..company/" "https://.company/" "https://company./" "https://-a.company/"
    "https://a-.company/" "https://a_b.company/" "https://ñandú.company/")
string(REPEAT a 63 longest)
accept(BASE_URL "https://${longest}.company/")
refuse(BASE_URL "have a host of at most 253 characters, with at most 63 between two dots" "https://a${longest}.company/"
    "https://${longest}.${longest}.${longest}.${longest}/")
refuse(BASE_URL "${number}" "https://999.1.1.1/" "https://127.300.1.1/" "http://127.300.1.1/" "https://1.2.3/" "https://1.2.3.4.5/"
    "http://127.1/" "https://1.2.3.04/" "https://2130706433/" "https://0x7f000001/" "https://company.1/")
refuse(BASE_URL "${group}" "https://[1::2::3]/" "https://[1:2:3]/" "https://[12345::]/" "https://[1:2:3:4:5:6:7:8:9]/"
    "https://[1:2:3:4:5:6:7:8::]/" "https://[::1.2.3.256]/" "https://[]/" "https://[1.2.3.4]/")
refuse(BASE_URL "${port}" "https://service.example:0/" "https://service.example:99999/" "https://service.example:65536/"
    "https://service.example:x/" "https://service.example:/" "https://service.example:080/" "http://127.0.0.1:0/"
    "https://[::1]:70000/")
refuse(BASE_URL "${clear}" "http://example.com/" "http://127.0.0.1.example.com/" "http://localhost.example.com/" "http://10.0.0.1/")
refuse(BASE_URL "end in \"/\"" "https://service.example" "https://service.example/app")
refuse(BASE_URL "${bare}" "http://127.0.0.1@example.com/" "https://service.example/?a=/" "https://service.example/#/"
    "https://user@service.example/")
refuse(BASE_URL "contain no blanks, tabs or invisible characters" "https://a b/" "https://service.example/a b/"
    " https://service.example/" "https://service.example/ ")
refuse(BASE_URL "contain none of \" < > \\ ^ ` { | }" "https://service.example\\app/" "https://service.example/a|b/")
refuse(BASE_URL "contain [ and ] only around an IPv6 address" "https://service.example/[a]/")
refuse(BASE_URL "have two hexadecimal digits after each %" "https://service.example/50%/" "https://service.example/%4g/")
accept(TRACKING_URL "https://track.example/" "https://track.example/t/n/")
accept(HOMEPAGE "UNSET" "" "https://company.example/" "https://company.example/app/")
foreach(name IN ITEMS TRACKING_URL HOMEPAGE)
    refuse(${name} "${begin}" "http://127.0.0.1/" "track.example/")
    refuse(${name} "${clear}" "http://track.example/")
    refuse(${name} "have a host" "https:///")
    refuse(${name} "end in \"/\"" "https://track.example" "https://track.example/t")
    refuse(${name} "${bare}" "https://track.example/?n=/" "https://127.0.0.1@track.example/")
    refuse(${name} "${host}" "https://track..example/")
    refuse(${name} "${port}" "https://track.example:99999/")
endforeach()
accept(DEVELOPER_SITE "https://corvandel.example/" "https://corvandel.example" "https://corvandel.example/es?a=b[]#c"
    "https://corvandel.example?a=b" "https://corvandel.example/a/b")
refuse(DEVELOPER_SITE "${begin}" "corvandel.example" "javascript:alert(1)" "http://127.0.0.1/")
refuse(DEVELOPER_SITE "${clear}" "http://corvandel.example/")
refuse(DEVELOPER_SITE "have a host" "https://" "https://?a")
refuse(DEVELOPER_SITE "${bare}" "https://user@corvandel.example/")
refuse(DEVELOPER_SITE "${host}" "https://corvandel..example")
refuse(DEVELOPER_SITE "contain no blanks, tabs or invisible characters" "not a URL")
refuse(DEVELOPER_SITE "contain no blanks and none of \" < >" "https://corvandel.example/?a b" "https://corvandel.example/#<a>")

# E-mail addresses, the ZIP code and the telephone number.
accept(SUPPORT_EMAIL "soporte+app@mail.company.example")
accept(DEVELOPER_EMAIL "hola@corvandel.example" "o'neill.a@corvandel.example")
foreach(name IN ITEMS SUPPORT_EMAIL DEVELOPER_EMAIL)
    refuse(${name} "be an e-mail address without a name" "soporte" "soporte@" "@company.example" "soporte@company"
        "mailto:soporte@company.example" "Soporte <soporte@company.example>" "a b@company.example" "a@b@company.example"
        "soporte@company..example" "soporte@company.example?subject=a" "soporte@company.example " "soporte@-company.example"
        "a..b@company.example" ".a@company.example" "a.@company.example" "soporte@999.1.1.1")
endforeach()
accept(WAREHOUSE_ZIP "33166-0012")
refuse(WAREHOUSE_ZIP "be five digits, a hyphen and four digits" "33166" "33166-001A" "33166-00123" "331660012" " 33166-0012")
accept(WAREHOUSE_PHONE "+1 305 555 0142" "+13055550142" "+1 (305) 555-0142" "+507 6000.0000")
refuse(WAREHOUSE_PHONE "be a number in international form, a + and 7 to 15 digits" "305 555 0142" "+1 305" "+0 305 555 0142"
    "+1 305 555 0142 0142 01" "1 305 555 0142" "+1 305 555 CALL" "++13055550142" "001 305 555 0142")

# Texts.
foreach(name IN ITEMS WAREHOUSE_STREET WAREHOUSE_CITY DEVELOPER_SITE_TEXT)
    accept(${name} "Ñandú \"8\" & Cía. ? \\ \$ @A@ %1" "東京" "a${no_break_space}b")
    refuse_unseen(${name} "be a text" "${no_break_space}${no_break_space}" "<U+00A0><U+00A0>")
    refuse_unseen(${name} "be a text" " ${ideographic_space}" " <U+3000>")
    refuse_unseen(${name} "be a text without blanks around it" "Miami${no_break_space}" "Miami<U+00A0>")
    refuse(${name} "be a text" "  ")
    refuse(${name} "be a text without blanks around it" " Miami" "Miami ")
endforeach()
accept(MAINTAINER "UNSET" "" "Envíos & Cía., S.A.")
refuse(MAINTAINER "be a name without < > \" \\ @ ( )" "Ana <ana@company.example>" "\"Ana\"")
set(names BASE_URL TRACKING_URL SUPPORT_EMAIL WAREHOUSE_STREET WAREHOUSE_CITY WAREHOUSE_ZIP WAREHOUSE_PHONE DEVELOPER_SITE
    DEVELOPER_SITE_TEXT DEVELOPER_EMAIL)
foreach(name IN LISTS names)
    foreach(value IN ITEMS UNSET "")
        write_deployment(${name} "${value}")
        expect("MAROVENDA_${name} is not set; write it as in set(MAROVENDA_${name} \"${example_of_${name}}\").")
    endforeach()
endforeach()
set(line "be one line without tabs and invisible characters")
foreach(name IN ITEMS ${names} HOMEPAGE MAINTAINER)
    refuse_unseen(${name} "${line}" "a\nb" "a<U+000A>b")
    refuse_unseen(${name} "${line}" "a\tb" "a<U+0009>b")
endforeach()
foreach(pair IN ITEMS "zero_width_space:U+200B" "right_to_left:U+200F" "override:U+202E" "isolate:U+2066" "soft_hyphen:U+00AD"
        "next_line:U+0085" "tag:U+0E0041")
    string(REGEX MATCH "^(.*):(.*)$" _ "${pair}")
    refuse_unseen(WAREHOUSE_STREET "${line}" "100 Way${${CMAKE_MATCH_1}}" "100 Way<${CMAKE_MATCH_2}>")
endforeach()
refuse_unseen(BASE_URL "${line}" "https://a.example/${right_to_left}/" "https://a.example/<U+200F>/")

# How the file is written. CMake would take each of these for something else, or for nothing.
set(one "it must be one text in quotation marks, and \\\" inside it for a quotation mark")
refuse_line(WAREHOUSE_STREET [[set(MAROVENDA_WAREHOUSE_STREET "100 "La Gran" Way")]]
    "MAROVENDA_WAREHOUSE_STREET is written as \"100 \"La Gran\" Way\" in line 13; ${one}, as in \"${example_of_WAREHOUSE_STREET}\".")
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WAREHOUSE_CITY Coral Gables)"
    "MAROVENDA_WAREHOUSE_CITY is written as Coral Gables in line 13; ${one}, as in \"Miami\".")
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WAREHOUSE_CITY Miami\;Doral)"
    "MAROVENDA_WAREHOUSE_CITY is written as Miami\;Doral in line 13; ${one}, as in \"Miami\".")
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WAREHOUSE_CITY \"Miami)"
    "MAROVENDA_WAREHOUSE_CITY is written as \"Miami in line 13; ${one}, as in \"Miami\".")
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WAREHOUSE_CITY \"Miami\" CACHE STRING \"\")"
    "MAROVENDA_WAREHOUSE_CITY is written as \"Miami\" CACHE STRING \"\" in line 13; ${one}, as in \"Miami\".")
refuse_line(WAREHOUSE_STREET [[set(MAROVENDA_WAREHOUSE_STREET "100 Way; C:\suite")]]
    "MAROVENDA_WAREHOUSE_STREET is written as \"100 Way; C:\\suite\" in line 13; it must
    have \\ only before \", \\ and \$; write \\\\ for a backslash, as in")
refuse_line(WAREHOUSE_STREET [[set(MAROVENDA_WAREHOUSE_STREET "100 ${BAR} Way")]]
    "MAROVENDA_WAREHOUSE_STREET is written as \"100 \${BAR} Way\" in line 13; it must
    be without variables such as \${BAR}; write \\\$ for a dollar sign, as in")
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WAREHOUSE_CITY \"Miami\")\nset(MAROVENDA_WAREHOUSE_CITY \"Doral\")"
    "MAROVENDA_WAREHOUSE_CITY is set twice, to \"Miami\" in line 13 and to \"Doral\" in line 14; it
    must be set once, as in \"Miami\".")
refuse_line(WAREHOUSE_CITY "set(MARROVENDA_WAREHOUSE_CITY \"Miami\")"
    "MARROVENDA_WAREHOUSE_CITY in line 13 is no value of a deployment; the nearest is MAROVENDA_WAREHOUSE_CITY.")
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WEARHOUSE_CITTY \"Miami\")"
    "MAROVENDA_WEARHOUSE_CITTY in line 13 is no value of a deployment; the nearest is MAROVENDA_WAREHOUSE_CITY.")
refuse_line(BASE_URL "set(marovenda_base_url \"https://a.example/\")"
    "marovenda_base_url in line 13 is no value of a deployment; the nearest is MAROVENDA_BASE_URL.")
refuse_line(DEVELOPER_SITE "set(marovenda_developer_site \"https://a.example/\")"
    "marovenda_developer_site in line 13 is no value of a deployment; the nearest is MAROVENDA_DEVELOPER_SITE.")
refuse_line(NOTHING "set(MAROVENDA_TESTS OFF)" "MAROVENDA_TESTS in line 13 is no value of a deployment;")
refuse_line(NOTHING "include(\"common.cmake\")"
    "Line 13 is include(\"common.cmake\"); it must be a comment of one line, or one value as in set(MAROVENDA_WAREHOUSE_CITY \"Miami\").")
refuse_line(WAREHOUSE_CITY "#[[\nset(MAROVENDA_WAREHOUSE_CITY \"Miami\")\n]]" "Line 13 is #[[; it must be a comment of one line,")

# Other ways to write the same value.
function(read_as line words)
    write_deployment(WAREHOUSE_STREET "UNSET")
    file(APPEND ${WORK}/deployment.cmake "${line}")
    check(code said)
    string(FIND "${said}" "MAROVENDA_WAREHOUSE_STREET: ${words} -- " at)
    if(NOT code EQUAL 0 OR at EQUAL -1)
        message(SEND_ERROR "not read as ${words}: ${line}: ${said}")
    endif()
endfunction()
read_as([[set(MAROVENDA_WAREHOUSE_STREET "100 \"La Gran\" Way")]] "100 \"La Gran\" Way")
read_as([[set(MAROVENDA_WAREHOUSE_STREET "8; C:\\suite \${BAR} $5 @FOO@ # [1] \(a\)")]] "8; C:\\suite \${BAR} $5 @FOO@ # [1] (a)")
read_as([==[SET ( MAROVENDA_WAREHOUSE_STREET [=[100 "La ]] Gran" Way]=] ) # the warehouse]==] "100 \"La ]] Gran\" Way")
read_as("set(MAROVENDA_WAREHOUSE_STREET\n    \"100 Way\"\n)\n\n# set(MAROVENDA_WAREHOUSE_STREET \"8 Way\")\n" "100 Way")
read_as("set(MAROVENDA_WAREHOUSE_STREET Miami)" "Miami")
read_as("\r\nset(MAROVENDA_WAREHOUSE_STREET \"100 Way\")\r\n" "100 Way")
write_deployment(NOTHING UNSET)
file(READ ${WORK}/deployment.cmake text)
character(mark 239 187 191)
file(WRITE ${WORK}/deployment.cmake "${mark}${text}")
check(code said)
if(NOT code EQUAL 0)
    message(SEND_ERROR "a byte order mark: ${said}")
endif()

# Encodings.
character(windows 78 243 32 241)
refuse_line(WAREHOUSE_CITY "set(MAROVENDA_WAREHOUSE_CITY \"${windows}\")"
    "Line 13 is not in UTF-8 but in Windows-1252 or the like: set(MAROVENDA_WAREHOUSE_CITY \"Nó ñ\")
    Save the file as UTF-8, in the editor or with: iconv
    -f WINDOWS-1252 -t UTF-8 OLD.cmake >NEW.cmake")
execute_process(COMMAND iconv -f UTF-8 -t UTF-16 ${SOURCE}/deployments/demo.cmake OUTPUT_FILE ${WORK}/deployment.cmake)
expect("The file is in UTF-16, or is no text; save it as UTF-8.")

# All wrong values are named at once, also one whose text CMake would take for a list.
file(WRITE ${WORK}/deployment.cmake "set(MAROVENDA_BASE_URL [[http://a;b/]])\nset(MAROVENDA_WAREHOUSE_ZIP 33166)\n")
check(code said)
string(REPLACE ";" "," said "${said}")
foreach(words IN ITEMS "MAROVENDA_BASE_URL is \"http://a,b/\"" "MAROVENDA_WAREHOUSE_ZIP is \"33166\""
        "MAROVENDA_SUPPORT_EMAIL is not set")
    string(FIND "${said}" "${words}" at)
    if(at EQUAL -1)
        message(SEND_ERROR "not named among others: ${words}: ${said}")
    endif()
endforeach()

# The whole way, through the build's own configuring.
write_deployment(BASE_URL "http://example.com/")
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DMAROVENDA_DEPLOYMENT=${WORK}/deployment.cmake
    RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(code EQUAL 0 OR NOT said MATCHES "MAROVENDA_BASE_URL" OR NOT said MATCHES "http://example.com/")
    message(SEND_ERROR "configured for http://example.com/: ${said}")
endif()
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DMAROVENDA_DEPLOYMENT=no-such-deployment
    RESULT_VARIABLE code OUTPUT_VARIABLE said ERROR_VARIABLE said)
if(code EQUAL 0 OR NOT said MATCHES "no-such-deployment")
    message(SEND_ERROR "configured without a deployment: ${said}")
endif()
