<?php
// The web server gives every request to this file. It calls a function of endpoints.php and sends one JSON object.
declare(strict_types=1);
// PHP's own messages go to the log. One warning in a body makes the reply unreadable for the app.
ini_set('display_errors', '0');

// The last part of the address is the endpoint, so the base address may be a folder such as /app/.
define('ENDPOINT', basename(explode('?', $_SERVER['REQUEST_URI'])[0]));

function send_reply(array $reply, int $http_status = 200): void {
    $json = json_encode($reply, JSON_UNESCAPED_UNICODE | JSON_INVALID_UTF8_SUBSTITUTE | JSON_THROW_ON_ERROR);
    if (!headers_sent()) {
        http_response_code($http_status);
        header('Content-Type: application/json');
        header('Content-Length: ' . strlen($json));
    }
    echo $json;
}

function send_error(int $http_status, string $message = 'No pudimos atender tu solicitud. Inténtalo más tarde.'): void {
    $lists = ENDPOINT === 'api_paquetes.php' ? ['paquetes' => [], 'cotizaciones' => []] : [];
    send_reply(['status' => 'error', 'message' => $message] + $lists, $http_status);
}

// PHP calls this at the end. It answers errors that nobody can catch (no memory, no time).
register_shutdown_function(function (): void {
    if ((error_get_last()['type'] ?? 0) & (E_ERROR | E_CORE_ERROR | E_COMPILE_ERROR)) {
        send_error(500);
    }
});

// A warning stops the request. A "deprecated" of a newer PHP is only logged.
set_error_handler(fn($level, $text, $file, $line) => throw new ErrorException($text, 0, $level, $file, $line),
    E_ALL & ~E_DEPRECATED);

try {
    require __DIR__ . '/../endpoints.php';
    $method = $_SERVER['REQUEST_METHOD'];
    $function = ENDPOINTS[$method . ' ' . ENDPOINT] ?? throw new Refusal('Esta dirección no existe', 404);
    send_reply($function(open_database(), $method === 'GET' ? $_GET : read_json()));
} catch (Refusal $refusal) {
    send_error($refusal->getCode(), $refusal->getMessage());
} catch (Throwable $error) {
    // The log gets the message and the place, but no arguments: they could contain a password.
    error_log("{$error->getMessage()} at {$error->getFile()}:{$error->getLine()}");
    send_error(500);
}
