<?php
// What all endpoints use: refusals, the fields of a request, e-mail addresses, the database.
declare(strict_types=1);
const INVALID_REQUEST = 'La solicitud no es válida', EMAIL_TAKEN = 'Ese correo ya está registrado';

// An endpoint throws this to answer "error". The message is for the customer. The code is the HTTP status.
class Refusal extends Exception {}

function refuse_if(bool $condition, string $message, int $http_status = 200): void {
    if ($condition) {
        throw new Refusal($message, $http_status);
    }
}

function read_json(): array {
    // A body with the largest photo has up to 179 MB. Check before reading, which needs as much memory.
    refuse_if((int)($_SERVER['CONTENT_LENGTH'] ?? 0) > 192 * 1024 * 1024, 'El envío es demasiado grande', 413);
    $request = json_decode(file_get_contents('php://input'), true);
    return is_array($request) ? $request : throw new Refusal(INVALID_REQUEST, 400);
}

// The limit is ours, not the protocol's. It counts bytes: "ñ" has two.
function text(array $request, string $key, int $max_bytes = 5000): string {
    $value = $request[$key] ?? null;
    refuse_if(!is_string($value), INVALID_REQUEST, 400);
    refuse_if(strlen($value) > $max_bytes, 'Uno de los textos o la foto es demasiado grande', 400);
    return $value;
}

// Gives a number as SQLite reads it without loss: "2.5", "40", "1.0e+300".
function number(array $request, string $key): string {
    $value = $request[$key] ?? null;
    refuse_if(!is_int($value) && !(is_float($value) && is_finite($value)), INVALID_REQUEST, 400);
    return json_encode($value);
}

// Removes white space at both ends, as the app does in the registration. It knows Unicode's blanks too.
function trimmed(string $text): string {
    return preg_replace('/^\s++|\s++$/Du', '', $text);
}

// Two addresses are the same if their keys are: trimmed, in lower case, in Unicode form NFC. PHP's extensions intl and
// mbstring convert all letters. Without them, the capitals and accents below are converted, enough for Spanish.
function email_key(string $email): string {
    if (class_exists('Normalizer') && function_exists('mb_strtolower')) {
        return Normalizer::normalize(mb_strtolower(trimmed($email), 'UTF-8'));
    }
    return strtr(strtolower(trimmed($email)), [
        'Á' => 'á', 'É' => 'é', 'Í' => 'í', 'Ó' => 'ó', 'Ú' => 'ú', 'Ü' => 'ü', 'Ñ' => 'ñ',
        "a\u{301}" => 'á', "e\u{301}" => 'é', "i\u{301}" => 'í', "o\u{301}" => 'ó', "u\u{301}" => 'ú',
        "u\u{308}" => 'ü', "n\u{303}" => 'ñ']);
}

// MAROVENDA_DB in the environment names another file. Whoever finds the database busy waits for up to 10 seconds.
function open_database(): PDO {
    $file = getenv('MAROVENDA_DB') ?: __DIR__ . '/data/marovenda.sqlite';
    $db = new PDO("sqlite:$file", null, null, [PDO::ATTR_TIMEOUT => 10, PDO::ATTR_DEFAULT_FETCH_MODE => PDO::FETCH_ASSOC]);
    $db->exec('PRAGMA foreign_keys = ON');
    if ((int)$db->query('PRAGMA user_version')->fetchColumn() === 0) {
        // The tables are missing. Only one process creates them; the others wait here.
        $lock = fopen("$file.lock", 'c');
        flock($lock, LOCK_EX);
        $db->exec('PRAGMA journal_mode = WAL'); // Stays in the file: readers do not wait for a writer.
        $db->exec(file_get_contents(__DIR__ . '/schema.sql'));
        fclose($lock);
    }
    return $db;
}

// Runs one statement. Values never become part of the SQL text.
function run(PDO $db, string $sql, array $values): PDOStatement {
    $statement = $db->prepare($sql);
    foreach ($values as $name => $value) {
        $text = $name === 'photo' ? PDO::PARAM_LOB : PDO::PARAM_STR;
        $statement->bindValue($name, $value, is_int($value) ? PDO::PARAM_INT : $text);
    }
    $statement->execute();
    return $statement;
}
