<?php
// One function for each endpoint. It gets the request, and returns the reply or throws a Refusal.
declare(strict_types=1);
require __DIR__ . '/lib.php';
const ENDPOINTS = ['POST api_login.php' => 'login', 'POST api_registro.php' => 'register',
    'POST api_recuperar.php' => 'request_link', 'GET api_paquetes.php' => 'list_rows',
    'POST api_casillero.php' => 'mailbox', 'POST api_cotizar.php' => 'request_quotation',
    'POST api_auto.php' => 'request_vehicle', 'POST api_perfil.php' => 'save_profile'];
const MAX_PHOTO = 67108864; // Bytes: 64 MiB, the largest file that the app sends. Base64 makes 4 characters of 3 bytes.
const MAX_ATTEMPTS = 10, ATTEMPTS_SECONDS = 900; // Failed sign-ins for one e-mail address within these seconds.
const MAX_PASSWORD = 72; // Bytes. password_hash ignores what comes after them, or after U+0000.

function login(PDO $db, array $request): array {
    $key = email_key(text($request, 'email'));
    $password = trimmed(text($request, 'password', MAX_PASSWORD)); // The registration trimmed it too.
    // The attempt is stored before the check, in one statement: parallel requests cannot pass the limit.
    // Unknown addresses count in the same way, so that the limit tells nothing about them.
    run($db, 'DELETE FROM login_attempts WHERE at < :old', ['old' => time() - ATTEMPTS_SECONDS]);
    $attempt = run($db, 'INSERT INTO login_attempts (email_key, at) SELECT :key, :now
        WHERE (SELECT COUNT(*) FROM login_attempts WHERE email_key = :key) < :max',
        ['key' => $key, 'now' => time(), 'max' => MAX_ATTEMPTS]);
    refuse_if($attempt->rowCount() === 0, 'Demasiados intentos. Espera unos minutos.');
    $customer = run($db, 'SELECT * FROM customers WHERE email_key = :key', ['key' => $key])->fetch();
    if (!$customer) {
        password_hash('x', PASSWORD_DEFAULT); // Takes as long as a check, so the time tells nothing.
    }
    $correct = $customer && password_verify($password, $customer['password_hash']) && !str_contains($password, "\0");
    refuse_if(!$correct, 'Correo o contraseña incorrectos');
    run($db, 'DELETE FROM login_attempts WHERE email_key = :key', ['key' => $key]);
    return ['status' => 'success', 'message' => 'Bienvenido',
        'id' => (string)$customer['id'], 'nombre' => $customer['nombre']];
}

function register(PDO $db, array $request): array {
    $fields = [];
    foreach (['nombre', 'email', 'password', 'direccion', 'ciudad'] as $key) {
        $fields[$key] = trimmed(text($request, $key));
        refuse_if($fields[$key] === '', 'Completa todos los campos');
    }
    refuse_if(strlen($fields['password']) > MAX_PASSWORD || str_contains($fields['password'], "\0"),
        'La contraseña es demasiado larga o contiene un carácter no permitido');
    check_email($fields['email']);
    return ['status' => 'success', 'message' => 'Tu casillero está listo',
        'id' => (string)add_customer($db, $fields), 'nombre' => $fields['nombre']];
}

// This is a rough check: only an e-mail tells whether an address works.
function check_email(string $email): void {
    refuse_if(strlen($email) > 254 || !preg_match('/^[^\s@\p{Cc}]+@[^\s@\p{Cc}]+$/Du', $email), 'El correo no es válido');
}

// The number is random: whoever knows it can read the customer's data. OR IGNORE stores nothing if the address is taken.
function add_customer(PDO $db, array $fields): int {
    $id = random_int(1, PHP_INT_MAX);
    $fields['password'] = password_hash($fields['password'], PASSWORD_DEFAULT);
    $insert = run($db, 'INSERT OR IGNORE INTO customers (id, mailbox, nombre, email, email_key, password_hash, direccion, ciudad)
        SELECT :id, COALESCE(MAX(mailbox), 1000) + 1, :nombre, :email, :key, :password, :direccion, :ciudad
        FROM customers', $fields + ['id' => $id, 'key' => email_key($fields['email'])]);
    refuse_if($insert->rowCount() === 0, EMAIL_TAKEN);
    return $id;
}

// The same statement runs and the same reply is sent, whether or not a customer has the address.
function request_link(PDO $db, array $request): array {
    run($db, 'INSERT OR IGNORE INTO link_requests SELECT id, :now FROM customers WHERE email_key = :key',
        ['now' => time(), 'key' => email_key(text($request, 'email'))]);
    return ['status' => 'success', 'message' => 'Si el correo está registrado, recibirás un enlace'];
}

// All columns of both lists are TEXT, so PHP gets texts and never numbers.
function list_rows(PDO $db, array $request): array {
    $id = ['id' => find_customer($db, filter_var(text($request, 'user_id'), FILTER_VALIDATE_INT))['id']];
    $packages = run($db, 'SELECT tracking, descripcion, estado, fecha_recibido FROM packages
        WHERE customer_id = :id ORDER BY fecha_recibido DESC, id DESC', $id);
    $quotations = run($db, 'SELECT origen, descripcion, estado FROM quotations WHERE customer_id = :id ORDER BY id DESC', $id);
    return ['status' => 'success', 'paquetes' => $packages->fetchAll(), 'cotizaciones' => $quotations->fetchAll()];
}

function mailbox(PDO $db, array $request): array {
    // Here the app sends the number as a text. filter_var gives false if it is not a number of 64 bits.
    $customer = find_customer($db, filter_var(text($request, 'user_id'), FILTER_VALIDATE_INT));
    return ['status' => 'success', 'nombreCompleto' => "{$customer['nombre']} MRV-{$customer['mailbox']}"];
}

function find_customer(PDO $db, mixed $id): array {
    refuse_if(!is_int($id), INVALID_REQUEST, 400);
    return run($db, 'SELECT * FROM customers WHERE id = :id', ['id' => $id])->fetch()
        ?: throw new Refusal('No encontramos a ese cliente');
}

function request_quotation(PDO $db, array $request): array {
    $values = ['id' => find_customer($db, $request['user_id'] ?? null)['id'],
        'tipo' => text($request, 'tipo'), 'origen' => text($request, 'origen'), 'destino' => text($request, 'destino'),
        'peso' => number($request, 'peso'), 'valor' => number($request, 'valor'),
        'descripcion' => text($request, 'descripcion'), 'now' => time()];
    refuse_if(!in_array($values['tipo'], ['aereo', 'maritimo'], true), INVALID_REQUEST, 400);
    run($db, "INSERT INTO quotations (customer_id, tipo, origen, destino, peso, valor, descripcion, estado, created_at)
        VALUES (:id, :tipo, :origen, :destino, :peso, :valor, :descripcion, 'pendiente', :now)", $values);
    return ['status' => 'success', 'message' => 'Recibimos tu solicitud de cotización'];
}

function request_vehicle(PDO $db, array $request): array {
    $values = ['id' => find_customer($db, $request['user_id'] ?? null)['id'],
        'marca' => text($request, 'marca'), 'modelo' => text($request, 'modelo'),
        'anio' => text($request, 'anio'), 'ubicacion' => text($request, 'ubicacion'), 'now' => time()];
    run($db, 'INSERT INTO vehicles (customer_id, marca, modelo, anio, ubicacion, created_at)
        VALUES (:id, :marca, :modelo, :anio, :ubicacion, :now)', $values);
    return ['status' => 'success', 'message' => 'Recibimos tu solicitud de importación'];
}

// An empty text means: keep what is stored. The app has no field for the password, so it is always empty.
function save_profile(PDO $db, array $request): array {
    $customer = find_customer($db, $request['user_id'] ?? null);
    $name = trimmed(text($request, 'nombre')) === '' ? $customer['nombre'] : $request['nombre'];
    $email = trimmed(text($request, 'email')) ?: $customer['email'];
    refuse_if(text($request, 'password') !== '', INVALID_REQUEST, 400);
    $photo = base64_decode(text($request, 'avatar_base64', intdiv(MAX_PHOTO + 2, 3) * 4), true);
    refuse_if($photo === false || strlen($photo) > MAX_PHOTO, 'No pudimos leer la foto', 400);
    check_email($email);
    $db->beginTransaction(); // The first statement writes, so SQLite waits here if another request writes.
    $update = run($db, 'UPDATE OR IGNORE customers SET nombre = :nombre, email = :email, email_key = :key WHERE id = :id',
        ['nombre' => $name, 'email' => $email, 'key' => email_key($email), 'id' => $customer['id']]);
    refuse_if($update->rowCount() === 0, EMAIL_TAKEN); // PHP closes the database, which ends the transaction.
    if ($photo !== '') { // The file may be anything. Check it before you show it to anybody.
        run($db, 'INSERT OR REPLACE INTO photos VALUES (:id, :photo)', ['id' => $customer['id'], 'photo' => $photo]);
    }
    $db->commit();
    return ['status' => 'success', 'message' => 'Perfil actualizado'];
}
